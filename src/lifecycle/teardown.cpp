#include "lifecycle/teardown.h"

#include "host_interface/acquisition_table.h"
#include "host_interface/result.h"
#include "host_interface/slot_camera.h"
#include "lifecycle/attach_detach.h"
#include "lifecycle/camera_list.h"
#include "lifecycle/setup.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"

namespace tavro::lifecycle {

int32_t TearDown(SystemRecord& system) {
  // Everything ends here without a report: the acquisitions are forgotten
  // before the detaches, which would otherwise report them.
  system.yLive = 0;
  for (auto& entry : host_interface::tTavroCamAcq) entry.yAcquiring = 0;
  // Only numbers that exist, whatever the record says.
  for (int32_t n = 0; n < system.iNumCams && n < host_interface::kMaxCameras; ++n) {
    if (system.tSlot[n].yAttached != 0) DetachCamera(&system, n);
  }
  // A camera the host attached beyond iNumCams is not detached, but its
  // object must not outlive the events and the library its worker uses.
  for (CameraSlot& slot : system.tSlot) {
    if (host_interface::HoldsOwnedCamera(slot)) host_interface::TakeCamera(slot).reset();
  }
  for (auto& entry : host_interface::tTavroCamAcq) entry.hEvent.reset();
  for (int32_t n = 0; n < host_interface::kMaxCameras; ++n) {
    host_interface::tTavroCamAcq[n].ptCamImage = nullptr;
    system.tSlot[n].yAttached = 0;
  }
  FreeCameraSelection(system);
  ReleaseCameraLists();
  // Built now if no setup built it; throws when the library never started.
  oxel::core::DeviceManager& manager = oxel::core::DeviceManager::Instance();
  CloseCameraLibrary();
  // Another user of the library keeps it, and the manager's lists with it.
  if (!oxel::Library::IsInitialized()) manager.Reset(true);
  return host_interface::kSuccess;
}

}  // namespace tavro::lifecycle
