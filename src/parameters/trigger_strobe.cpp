// Selecting the trigger configuration, remembered so that a repeated request
// costs no camera access.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {

bool OxelCamera::SetTriggerMode(int32_t mode, bool force) {
  if (!force && triggerMode == mode) return true;
  Stop();
  try {
    for (const parameters::EnumerationWrite& write : parameters::TriggerModeWrites(mode)) {
      SelectEntry(nodeMap, write.feature, write.entry);
    }
  } catch (const std::exception&) {
    // Writes already made stay made; the cache keeps the old mode so that
    // the next request writes again.
    return false;
  }
  triggerMode = mode;
  return true;
}

}  // namespace tavro::camera
