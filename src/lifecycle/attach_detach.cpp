#include "lifecycle/attach_detach.h"

#include "diagnostics/debug_output.h"
#include "host_interface/camera_lookup.h"
#include "host_interface/result.h"
#include "host_interface/slot_camera.h"

namespace tavro::lifecycle {
int32_t DetachCamera(SystemRecord* system, int32_t number) {
  if (system == nullptr || !host_interface::IsAttached(*system, number)) {
    return host_interface::kFailure;
  }
  diagnostics::DebugPrintf("_kxDetachTavroCamera() called\n");
  diagnostics::FlushStdout();

  CameraSlot& slot = system->tSlot[number];
  if (slot.pCamera != nullptr) {
    // Ends the camera's live loop and worker and releases its device.
    host_interface::TakeCamera(slot).reset();
    system->tCam[number].yEnabled = 0;
    slot.yReapply = 1;
  }
  slot.yLive = 0;
  slot.yAttached = 0;
  return host_interface::kSuccess;
}

int32_t AttachCamera(SystemRecord* system, int32_t number) {
  if (!host_interface::IsCameraNumber(number) || system == nullptr ||
      system->tSlot[number].yAttached != 0) {
    return host_interface::kFailure;
  }
  return _kxTavroReattachAndInit(system, number);
}

int32_t _kxTavroReattachAndInit(SystemRecord* system, int32_t number) {
  (void)system;
  (void)number;
  // Listing the cameras again and opening one by its key are not built yet:
  // no camera can be found, which is a failed re-attach.
  return host_interface::kFailure;
}

}  // namespace tavro::lifecycle
