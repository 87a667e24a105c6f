#include "camera/acquisition_ops.h"

#include "host_interface/result.h"

// Applying parameters, binding the host's planes, triggering, live runs and
// waiting for frames are not built yet: each operation fails without
// touching the camera, the records or the status word.
namespace tavro::camera {

int32_t AcquireSequence(CamImage*, uint32_t, uint32_t, uint32_t*, SystemRecord*, int32_t) {
  return host_interface::kFailure;
}

int32_t LiveAcquire(CamImage*, uint32_t, uint32_t, uint32_t*, SystemRecord*) {
  return host_interface::kFailure;
}

int32_t WaitForAcquisition(CamImage*, int32_t, uint32_t, uint32_t, uint32_t*, SystemRecord*) {
  return host_interface::kFailure;
}

}  // namespace tavro::camera
