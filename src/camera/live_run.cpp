#include "camera/live_run.h"

#include <array>

#include "host_interface/acquisition_table.h"

namespace tavro::camera {

platform::RecursiveMutex liveRunMutex;

std::atomic<bool>& LiveRunDiedFlag(int32_t number) {
  static std::array<std::atomic<bool>, host_interface::kMaxCameras> died{};
  return died.at(static_cast<size_t>(number));
}

}  // namespace tavro::camera
