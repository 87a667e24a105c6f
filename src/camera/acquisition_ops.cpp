#include "camera/acquisition_ops.h"

#include "camera/acquisition_parameters.h"
#include "camera/destination_binding.h"
#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "host_interface/acquisition_table.h"
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
using host_interface::TavroCamAcq;

constexpr uint32_t kFrameTimeoutMs = 3000;
constexpr uint32_t kMaskTimeout = ACQERR_WAIT_TIMEOUT;
constexpr uint32_t kMaskFailure = ACQERR_WAIT_FAILED;

// The values the acquire sequence passes to a wait; they have no effect.
constexpr uint32_t kWaitValue1 = 0;
constexpr uint32_t kWaitValue2 = 3;

bool ArmAndFire(OxelCamera* camera, const TavroCamAcq& entry) {
  if (camera == nullptr) return false;
  if (entry.yHwTrigger != 0) return camera->ArmHardwareTrigger();
  return camera->ArmSoftwareTrigger() && camera->FireSoftwareTrigger();
}

}  // namespace

void ReportFinished(TavroCamAcq& entry, const SystemRecord& system) {
  if (system.pfnAcqFinished != nullptr) system.pfnAcqFinished(entry.ptCamImage, entry.iUserValue);
  entry.yAcquiring = 0;
}

int32_t AcquireSequence(CamImage* image, uint32_t wait, uint32_t userValue, uint32_t* status,
                        SystemRecord* system, int32_t number) {
  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  CameraSlot& slot = system->tSlot[number];

  if (StopLiveForAcquisition(image, userValue, status, system, number) != kSuccess) {
    return kFailure;
  }
  if (entry.yAcquiring != 0) {
    CamImage* previous = entry.ptCamImage;
    const int32_t waited =
        WaitForAcquisition(previous, number, kWaitValue1, kWaitValue2, status, system);
    if (waited != kSuccess) return waited;
    diagnostics::DebugPrintf("Finished waiting for CamImage %llx. yAcquiring = %d\n",
                             static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(previous)),
                             static_cast<int>(entry.yAcquiring));
    diagnostics::FlushStdout();
  }

  entry.ptCamImage = image;
  ApplyAcquisitionParameters(image, system, number);
  BindDestination(image, system, number, userValue);

  OxelCamera* camera = host_interface::CameraOf(slot);
  if (ArmAndFire(camera, entry)) {
    if (wait == 0) return kSuccess;  // a later wait collects the frame
    return WaitForAcquisition(image, number, kWaitValue1, kWaitValue2, status, system);
  }
  entry.yAcquiring = 0;
  // A camera that still answers keeps its slot; one that is gone is
  // detached, and the next acquire for it re-attaches it.
  if (camera == nullptr || !camera->IsResponding()) lifecycle::DetachCamera(system, number);
  return kFailure;
}

int32_t WaitForAcquisition(CamImage* image, int32_t number, uint32_t, uint32_t, uint32_t* status,
                           SystemRecord* system) {
  *status = 0;
  // Another image of the live camera is refused too: its frames belong to
  // the worker, and a second wait on the data stream would take them away.
  // A run that died ends here, refused all the same.
  if (Load(system->yLive) != 0 &&
      (image == Load(system->ptLiveImage) || Load(system->tSlot[number].yLive) != 0)) {
    EndDeadLiveRun(*system);
    return Fail(status, ACQERR_LIVE_RUNNING);
  }
  TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  if (entry.yAcquiring == 0) return Fail(status, ACQERR_NOT_ACQUIRING);

  OxelCamera* camera = host_interface::CameraOf(system->tSlot[number]);
  const uint32_t mask = camera != nullptr ? camera->WaitAndDeliver(kFrameTimeoutMs) : kMaskFailure;
  if (mask == 0) {
    if (entry.hEvent) entry.hEvent->Reset();
    if (entry.yAcquiring != 0) ReportFinished(entry, *system);
    return kSuccess;
  }

  *status = mask;
  if (mask == kMaskTimeout) {
    diagnostics::DebugPrintf("_kxTavroWaitAcquire: Timeout waiting for acquisition to complete\n");
  } else {
    diagnostics::DebugPrintf("_kxTavroWaitAcquire: error mask %x\n", mask);
  }
  diagnostics::FlushStdout();

  // The camera is left stopped, so the next acquisition starts it afresh. A
  // successful stop ends the acquisition without a report; a failed one
  // leaves it to be reported here.
  if (entry.yAcquiring != 0 && StopCameraAcquisition(image, system, number, status) != kSuccess) {
    ReportFinished(entry, *system);
  }
  return kFailure;
}

int32_t StopCameraAcquisition(CamImage*, SystemRecord* system, int32_t number, uint32_t* status) {
  OxelCamera* camera = host_interface::CameraOf(system->tSlot[number]);
  if (camera != nullptr && !camera->Stop()) return Fail(status, ACQERR_CAMERA_OP);
  // Whatever the worker said of the run is over with it.
  LiveRunDiedFlag(number) = false;
  host_interface::tTavroCamAcq[number].yAcquiring = 0;
  if (camera != nullptr) {
    camera->frameCallback = nullptr;
    camera->frameCallbackArg = nullptr;
  }
  return kSuccess;
}

}  // namespace tavro::camera
