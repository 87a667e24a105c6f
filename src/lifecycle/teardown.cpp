#include "lifecycle/teardown.h"

#include "host_interface/acquisition_table.h"
#include "host_interface/result.h"
#include "lifecycle/attach_detach.h"
#include "lifecycle/setup.h"

namespace tavro::lifecycle {

int32_t TearDown(SystemRecord& system) {
  // Only numbers that exist, whatever the record says.
  for (int32_t n = 0; n < system.iNumCams && n < host_interface::kMaxCameras; ++n) {
    if (system.tSlot[n].yAttached != 0) DetachCamera(&system, n);
  }
  for (auto& entry : host_interface::tTavroCamAcq) entry.hEvent.reset();
  system.yLive = 0;
  for (int32_t n = 0; n < host_interface::kMaxCameras; ++n) {
    host_interface::tTavroCamAcq[n].yAcquiring = 0;
    host_interface::tTavroCamAcq[n].ptCamImage = nullptr;
    system.tSlot[n].yAttached = 0;
  }
  FreeCameraSelection(system);
  // Closing the camera library and resetting the device manager belong
  // here; neither is started yet.
  return host_interface::kSuccess;
}

}  // namespace tavro::lifecycle
