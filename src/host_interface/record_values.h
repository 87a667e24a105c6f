// Values the plug-in writes into host fields that it never reads again:
// the host's own business, but fixed.
#pragma once

#include <array>
#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::host_interface {

// CameraSlot.adHostValues after setup and after every attach.
inline constexpr std::array<double, 5> kSlotHostValues = {1.0, 0.0, 0.0, 1.0, 4.0};
// CameraSlot.iHostValue136 after setup and after every attach.
inline constexpr int64_t kSlotHostValue136 = -1;

inline void WriteSlotHostValues(CameraSlot& slot) {
  for (size_t i = 0; i < kSlotHostValues.size(); ++i) slot.adHostValues[i] = kSlotHostValues[i];
  slot.iHostValue136 = kSlotHostValue136;
}

}  // namespace tavro::host_interface
