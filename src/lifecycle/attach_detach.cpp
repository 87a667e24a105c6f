#include "lifecycle/attach_detach.h"

#include <memory>

#include "camera/acquisition_ops.h"
#include "diagnostics/debug_output.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/camera_lookup.h"
#include "host_interface/result.h"
#include "host_interface/shared_fields.h"
#include "host_interface/slot_camera.h"
#include "lifecycle/camera_list.h"
#include "lifecycle/open_camera.h"
#include "parameters/discovery.h"

namespace tavro::lifecycle {
namespace {

using host_interface::Load;
using host_interface::Store;

// Whatever the detached camera was doing can no longer end by itself: its
// live run ends (so that a live start elsewhere is not refused) and its
// pending image or live run is reported finished, once, so that the host
// does not wait for it and the next acquisition after re-attach starts
// clean. The camera's worker has ended by now, so the host may free the
// image inside the callback.
void EndAcquisitionOf(SystemRecord& system, int32_t number) TAVRO_REQUIRES(camera::liveRunMutex) {
  if (Load(system.yLive) != 0 && Load(system.iLiveCamNum) == number) {
    camera::LiveRunDiedFlag(number) = false;
    Store(system.yLive, 0);
  }
  host_interface::TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  if (entry.yAcquiring != 0) camera::ReportFinished(entry, system);
}

}  // namespace

int32_t DetachCamera(SystemRecord* system, int32_t number) {
  if (system == nullptr || !host_interface::IsCameraNumber(number)) {
    return host_interface::kFailure;
  }
  // The live camera is stopped and ended from other threads' calls too (an
  // acquisition elsewhere stops it), never while it is being destroyed.
  camera::LiveRunLock lock;
  if (!host_interface::IsAttached(*system, number)) return host_interface::kFailure;
  diagnostics::DebugPrintf("_kxDetachTavroCamera() called\n");
  diagnostics::FlushStdout();

  CameraSlot& slot = system->tSlot[number];
  if (slot.pCamera != nullptr) {
    // Ends the camera's live loop and worker and releases its device.
    host_interface::TakeCamera(slot).reset();
    system->tCam[number].yEnabled = 0;
    slot.yReapply = 1;
  }
  Store(slot.yLive, 0);
  Store(slot.yAttached, 0);
  EndAcquisitionOf(*system, number);
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
  diagnostics::StdoutLine("_kxTavroReattachAndInit: Number of cameras at startup = ",
                          system->iNumCams);
  // Listed again with the last setup's selection: a camera it does not
  // admit cannot come back.
  std::unique_ptr<camera::OxelCamera> camera;
  {
    ListingLock listing;
    if (MakeListOfAllCameras(system->pszCamSelection) < 1) return host_interface::kFailure;
    camera = std::make_unique<camera::OxelCamera>();
    if (BindCamera(camera.get(), system->tCam[number].szCamKey) < 0) {
      return host_interface::kFailure;
    }
  }
  if (!OpenCamera(*camera)) return host_interface::kFailure;
  camera::OxelCamera& opened = *camera;
  CameraSlot& slot = system->tSlot[number];
  host_interface::AdoptCamera(slot, std::move(camera));

  // The table, formats and key stay as setup's discovery wrote them; only
  // the new object's cached ranges are filled.
  parameters::DisableAutoFeatures(opened);
  opened.DiscoverGain();
  opened.DiscoverBlackLevel();
  opened.DiscoverThroughputLimit();
  opened.widthMax = opened.ReadWidthMax();
  opened.heightMax = opened.ReadHeightMax();
  parameters::MarkCameraAttached(*system, number);
  if (system->pszCamSelection == nullptr || system->pszCamSelection[0] == '\0') {
    opened.EnableStrobe(true, 0, parameters::kStartupStrobeDuration);
  }
  slot.yReapply = 1;
  Store(slot.yLive, 0);
  return host_interface::kSuccess;
}

}  // namespace tavro::lifecycle
