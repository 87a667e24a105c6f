// Live acquisition: one camera at a time streams into the host's image and
// live display, frame after frame, on the camera's worker. Every change of
// the live run happens under the live-run lock (camera/live_run.h).
#include "camera/acquisition_ops.h"
#include "camera/acquisition_parameters.h"
#include "camera/destination_binding.h"
#include "camera/live_display_callback.h"
#include "camera/live_run.h"
#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/camera_lookup.h"
#include "host_interface/result.h"
#include "host_interface/shared_fields.h"
#include "host_interface/slot_camera.h"
#include "lifecycle/attach_detach.h"

namespace tavro::camera {
namespace {

using host_interface::Fail;
using host_interface::kFailure;
using host_interface::kSuccess;
using host_interface::Load;
using host_interface::Store;
using host_interface::TavroCamAcq;

// The host's display tag travels with live start and stop; its meaning is
// the host's.
void CopyDisplayTag(const CamImage& image, SystemRecord& system) {
  const CameraInfo* info = image.ptCamera;
  const HostView* view = info != nullptr ? info->ptHostView : nullptr;
  if (view != nullptr && view->ptDisplay != nullptr) {
    system.qwLiveDisplayTag = view->ptDisplay->qwLiveDisplayTag;
  }
}

// Makes camera `number`, already at rest, the live camera and hands its loop
// to the worker. The system record names the live image even when the
// camera then fails to start, so that a later stop cleans up after it.
int32_t StartLiveOn(CamImage* image, uint32_t userValue, SystemRecord* system, int32_t number)
    TAVRO_REQUIRES(liveRunMutex) {
  Store(system->ptLiveImage, image);
  Store(system->iLiveCamNum, number);
  Store(system->yLive, 1);

  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  entry.ptCamImage = image;
  entry.yHwTrigger = 0;
  ApplyAcquisitionParameters(image, system, number);
  BindDestination(image, system, number, userValue);

  CameraSlot& slot = system->tSlot[number];
  if (Load(slot.yLive) != 0) return kSuccess;
  OxelCamera* camera = host_interface::CameraOf(slot);
  if (camera != nullptr) {
    camera->frameCallback = LiveDisplayCallback;
    camera->frameCallbackArg = &entry;
    LiveRunDiedFlag(number) = false;
    camera->worker.liveDied = &LiveRunDiedFlag(number);
    if (camera->StartLive()) {
      Store(slot.yLive, 1);
      return kSuccess;
    }
    camera->frameCallback = nullptr;
    camera->frameCallbackArg = nullptr;
  }
  system->lError = kFailure;
  return kFailure;
}

// A camera that no longer answers after a failed start (it was unplugged
// and has come back since) gets one new session, as an acquisition gives
// it. The detach ends the run the failed start left marked; the start's
// own report, if the new session cannot be had either, is left to the
// caller.
bool RenewLostSession(SystemRecord& system, int32_t number) TAVRO_REQUIRES(liveRunMutex) {
  OxelCamera* camera = host_interface::CameraOf(system.tSlot[number]);
  if (camera == nullptr || camera->IsResponding()) return false;
  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  const uint32_t acquiring = entry.yAcquiring;
  entry.yAcquiring = 0;
  lifecycle::DetachCamera(&system, number);
  entry.yAcquiring = acquiring;
  return lifecycle::_kxTavroReattachAndInit(&system, number) == kSuccess;
}

int32_t StopLive(uint32_t* status, SystemRecord* system, int32_t& number)
    TAVRO_REQUIRES(liveRunMutex) {
  if (Load(system->yLive) == 0) {
    diagnostics::DebugPrintf("Stop live acquire, but live acquire not running\n");
    diagnostics::FlushStdout();
    return kSuccess;
  }
  const int32_t live = Load(system->iLiveCamNum);
  if (!host_interface::IsCameraNumber(live)) {
    // Only a host that wrote the live fields itself gets here: there is no
    // live camera to stop, so the fields are forgotten.
    Store(system->yLive, 0);
    return Fail(status, ACQERR_NO_CAMERA);
  }
  number = live;
  // A run that died is stopped as any other, and reported on the way.
  if (EndDeadLiveRunLocked(*system)) return kSuccess;
  const int32_t result = StopCameraAcquisition(Load(system->ptLiveImage), system, number, status);
  if (result == kSuccess) {
    Store(system->tSlot[number].yLive, 0);
    Store(system->yLive, 0);
  }
  return result;
}

}  // namespace

bool LiveRunDied(const SystemRecord& system) {
  if (Load(system.yLive) == 0) return false;
  const int32_t live = Load(system.iLiveCamNum);
  return host_interface::IsCameraNumber(live) && LiveRunDiedFlag(live);
}

bool EndDeadLiveRunLocked(SystemRecord& system) {
  if (!LiveRunDied(system)) return false;
  const int32_t number = Load(system.iLiveCamNum);
  CameraSlot& slot = system.tSlot[number];
  if (OxelCamera* camera = host_interface::CameraOf(slot)) {
    // The worker is idle, so this returns at once; it stops the camera so
    // that no late frame of the run meets the next acquisition.
    camera->Stop();
    camera->frameCallback = nullptr;
    camera->frameCallbackArg = nullptr;
  }
  LiveRunDiedFlag(number) = false;
  // Reported before the flags clear, so that whoever sees live ended also
  // sees the acquisition ended.
  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  if (entry.yAcquiring != 0) ReportFinished(entry, system);
  Store(slot.yLive, 0);
  Store(system.yLive, 0);
  return true;
}

bool EndDeadLiveRun(SystemRecord& system) {
  if (!LiveRunDied(system)) return false;
  LiveRunLock lock;
  return EndDeadLiveRunLocked(system);
}

bool RefuseLiveStart(SystemRecord& system) {
  if (Load(system.yLive) == 0) return false;
  LiveRunLock lock;
  if (Load(system.yLive) == 0) return false;
  // The refusal stands as while the run went on; a run that died ends
  // here, so that the next start works.
  EndDeadLiveRunLocked(system);
  return true;
}

void AbandonLiveRun(SystemRecord& system) {
  uint32_t status = 0;
  int32_t number = -1;
  const int32_t live = Load(system.iLiveCamNum);
  // Not reported: the host no longer vouches for the image.
  if (Load(system.yLive) != 0 && host_interface::IsCameraNumber(live)) {
    host_interface::tTavroCamAcq[live].yAcquiring = 0;
  }
  StopLive(&status, &system, number);
  Store(system.yLive, 0);
}

int32_t LiveAcquireLocked(CamImage* image, uint32_t start, uint32_t userValue, uint32_t* status,
                          SystemRecord* system) {
  *status = 0;
  if (image == nullptr) return Fail(status, ACQERR_NO_IMAGE);
  int32_t number = host_interface::FindCameraNumber(*system, *image);
  if (!host_interface::IsAttached(*system, number)) return Fail(status, ACQERR_NO_CAMERA);
  CopyDisplayTag(*image, *system);

  int32_t result = kSuccess;
  if (start != 0) {
    if (Load(system->yLive) != 0) {
      // The refusal stands as while the run went on; a run that died ends
      // here, so that the next start works.
      EndDeadLiveRunLocked(*system);
      return Fail(status, ACQERR_LIVE_RUNNING);
    }
    // A camera that will not come to rest is not started, and whatever it
    // was doing is not reported.
    if (StopCameraAcquisition(image, system, number, status) != kSuccess) return kFailure;
    const int32_t errorBefore = system->lError;
    result = StartLiveOn(image, userValue, system, number);
    if (result == kSuccess) return kSuccess;
    if (RenewLostSession(*system, number)) {
      // The retry applies everything again, so it alone says what failed.
      system->lError = errorBefore;
      result = StartLiveOn(image, userValue, system, number);
      if (result == kSuccess) return kSuccess;
    }
  } else {
    result = StopLive(status, system, number);
  }

  // An acquisition that was not ended above (a single image still pending,
  // a failed start or stop) is reported to the host now.
  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  if (entry.yAcquiring != 0) ReportFinished(entry, *system);
  return result;
}

int32_t LiveAcquire(CamImage* image, uint32_t start, uint32_t userValue, uint32_t* status,
                    SystemRecord* system) {
  LiveRunLock lock;
  return LiveAcquireLocked(image, start, userValue, status, system);
}

int32_t StopLiveForAcquisition(CamImage* image, uint32_t userValue, uint32_t* status,
                               SystemRecord* system, int32_t number) {
  if (Load(system->yLive) == 0) return kSuccess;
  LiveRunLock lock;
  if (Load(system->yLive) == 0) return kSuccess;
  if (LiveAcquireLocked(image, 0, userValue, status, system) != kSuccess) return kFailure;
  Store(system->tSlot[number].yLive, 0);
  return kSuccess;
}

}  // namespace tavro::camera
