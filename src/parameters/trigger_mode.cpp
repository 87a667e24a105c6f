#include "parameters/trigger_mode.h"

#include <array>

namespace tavro::parameters {
namespace {

constexpr std::array<EnumerationWrite, 1> kOff{{{"TriggerMode", "Off"}}};
constexpr std::array<EnumerationWrite, 2> kSoftware{
    {{"TriggerMode", "On"}, {"TriggerSource", "Software"}}};
constexpr std::array<EnumerationWrite, 3> kLine0Falling{
    {{"TriggerMode", "On"}, {"TriggerSource", "Line0"}, {"TriggerActivation", "FallingEdge"}}};
constexpr std::array<EnumerationWrite, 3> kLine0Rising{
    {{"TriggerMode", "On"}, {"TriggerSource", "Line0"}, {"TriggerActivation", "RisingEdge"}}};

}  // namespace

std::span<const EnumerationWrite> TriggerModeWrites(int32_t mode) {
  switch (mode) {
    case TriggerModeOff:
      return kOff;
    case TriggerModeSoftware:
      return kSoftware;
    case TriggerModeLine0Falling:
      return kLine0Falling;
    case TriggerModeLine0Rising:
      return kLine0Rising;
    default:
      return {};
  }
}

}  // namespace tavro::parameters
