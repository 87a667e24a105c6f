// The nine functions the host calls. Each checks its arguments in a fixed
// order, answers bad ones with -1 and a status bit, and hands the rest of
// the work to the lifecycle or acquisition code. Null pointers that the host
// must not pass (status words, result pointers, the wanted configuration)
// answer the failure value without anything read or written through them.
#include <cstdint>

#include "camera/acquisition_ops.h"
#include "diagnostics/debug_output.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/camera_lookup.h"
#include "host_interface/entry_guard.h"
#include "host_interface/result.h"
#include "host_interface/shared_fields.h"
#include "lifecycle/attach_detach.h"
#include "lifecycle/camera_order.h"
#include "lifecycle/setup.h"
#include "lifecycle/teardown.h"
#include "tavro/tavro_host.h"

namespace {

using tavro::host_interface::Fail;
using tavro::host_interface::FindCameraNumber;
using tavro::host_interface::HasSystemMagic;
using tavro::host_interface::IsAttached;
using tavro::host_interface::kFailure;
using tavro::host_interface::kNoCamera;
using tavro::host_interface::kSuccess;
using tavro::host_interface::Load;
using tavro::host_interface::RunGuarded;

}  // namespace

extern "C" {

TAVRO_API int32_t kxTavroSetup(uint64_t, const char* pszSelection, int* piWidthMax,
                               int* piHeightMax, SystemRecord* ptSystem) {
  return RunGuarded("kxTavroSetup", kFailure, [&] {
    if (ptSystem == nullptr || piWidthMax == nullptr || piHeightMax == nullptr) return kFailure;
    ptSystem->ptLiveImage = nullptr;
    ptSystem->iLiveCamNum = -1;
    ptSystem->lMagic = 0;
    ptSystem->yLive = 0;
    if (tavro::lifecycle::SetupCameras(ptSystem, pszSelection, piWidthMax, piHeightMax) != 0) {
      return kFailure;
    }
    ptSystem->lMagic = TAVRO_SYSTEM_MAGIC;
    return kSuccess;
  });
}

TAVRO_API int32_t kxTavroAcquire(CamImage* ptCamImage, uint32_t yWait, uint32_t iUserValue,
                                 uint32_t* plStatus, SystemRecord* ptSystem) {
  return RunGuarded("kxTavroAcquire", kFailure, [&] {
    if (plStatus == nullptr) return kFailure;
    *plStatus = 0;
    // A detached camera is re-attached, and then every check runs again.
    // A camera whose session turns out to be gone (unplugged and plugged in
    // again since the last call) is detached by the sequence and gets one
    // more try on a new session, so that its first request after coming
    // back works; while it is still away the failure stands as it was.
    bool retried = false;
    for (;;) {
      if (!HasSystemMagic(ptSystem)) return Fail(plStatus, ACQERR_NO_SYSTEM);
      if (ptCamImage == nullptr) return Fail(plStatus, ACQERR_NO_IMAGE);
      const int32_t number = FindCameraNumber(*ptSystem, *ptCamImage);
      if (number == kNoCamera) return Fail(plStatus, ACQERR_NO_CAMERA);
      if (IsAttached(*ptSystem, number)) {
        const int32_t result = tavro::camera::AcquireSequence(ptCamImage, yWait, iUserValue,
                                                              plStatus, ptSystem, number);
        if (result == kSuccess || retried || IsAttached(*ptSystem, number)) return result;
        retried = true;
        if (tavro::lifecycle::_kxTavroReattachAndInit(ptSystem, number) != kSuccess) return result;
        *plStatus = 0;
        continue;
      }
      if (tavro::lifecycle::_kxTavroReattachAndInit(ptSystem, number) != kSuccess) {
        return Fail(plStatus, ACQERR_NO_CAMERA);
      }
      retried = true;
      *plStatus = 0;
    }
  });
}

TAVRO_API int32_t kxTavroLiveAcquire(CamImage* ptCamImage, uint32_t yStart, uint32_t iUserValue,
                                     uint32_t* plStatus, SystemRecord* ptSystem) {
  return RunGuarded("kxTavroLiveAcquire", kFailure, [&] {
    if (plStatus == nullptr) return kFailure;
    *plStatus = 0;
    if (!HasSystemMagic(ptSystem)) return Fail(plStatus, ACQERR_NO_SYSTEM);
    if (ptCamImage == nullptr) return Fail(plStatus, ACQERR_NO_IMAGE);
    // Whether the camera is attached is the live code's question.
    if (FindCameraNumber(*ptSystem, *ptCamImage) == kNoCamera) {
      return Fail(plStatus, ACQERR_NO_CAMERA);
    }
    if (yStart != 0 && tavro::camera::RefuseLiveStart(*ptSystem)) {
      return Fail(plStatus, ACQERR_LIVE_RUNNING);
    }
    return tavro::camera::LiveAcquire(ptCamImage, yStart, iUserValue, plStatus, ptSystem);
  });
}

TAVRO_API int32_t kxTavroWaitAcquire(CamImage* ptCamImage, uint32_t lValue1, uint32_t lValue2,
                                     uint32_t* plStatus, SystemRecord* ptSystem) {
  return RunGuarded("kxTavroWaitAcquire", kFailure, [&] {
    if (plStatus == nullptr) return kFailure;
    *plStatus = 0;
    if (!HasSystemMagic(ptSystem)) return Fail(plStatus, ACQERR_NO_SYSTEM);
    if (ptCamImage == nullptr) return kSuccess;  // nothing to wait for
    if (Load(ptSystem->yLive) != 0 && ptCamImage == Load(ptSystem->ptLiveImage)) {
      // Refused as while live runs; a run that died ends here.
      tavro::camera::EndDeadLiveRun(*ptSystem);
      return Fail(plStatus, ACQERR_LIVE_RUNNING);
    }
    const int32_t number = FindCameraNumber(*ptSystem, *ptCamImage);
    if (!IsAttached(*ptSystem, number)) return Fail(plStatus, ACQERR_NO_CAMERA);
    return tavro::camera::WaitForAcquisition(ptCamImage, number, lValue1, lValue2, plStatus,
                                             ptSystem);
  });
}

TAVRO_API int32_t kxTavroAcquireStatus(CamImage* ptCamImage, uint32_t* plAcqStatus,
                                       uint32_t* plStatus, SystemRecord* ptSystem) {
  return RunGuarded("kxTavroAcquireStatus", kFailure, [&] {
    if (plStatus == nullptr) return kFailure;
    *plStatus = 0;
    // This function reports every failure, a missing image included, as
    // having no image.
    if (!HasSystemMagic(ptSystem) || ptCamImage == nullptr || plAcqStatus == nullptr) {
      return Fail(plStatus, ACQERR_NO_IMAGE);
    }
    // A live run that died counts as ended here already; the next call that
    // would stop or refuse live cleans up after it.
    const bool liveDied = tavro::camera::LiveRunDied(*ptSystem);
    if (Load(ptSystem->yLive) != 0 && ptCamImage == Load(ptSystem->ptLiveImage)) {
      *plAcqStatus = liveDied ? ACQSTATUS_IDLE : ACQSTATUS_LIVE;
      return kSuccess;
    }
    const int32_t number = FindCameraNumber(*ptSystem, *ptCamImage);
    if (!IsAttached(*ptSystem, number)) return Fail(plStatus, ACQERR_NO_IMAGE);
    const bool acquiring = tavro::host_interface::tTavroCamAcq[number].yAcquiring != 0 &&
                           !(liveDied && number == Load(ptSystem->iLiveCamNum));
    *plAcqStatus = acquiring ? ACQSTATUS_ACQUIRING : ACQSTATUS_IDLE;
    return kSuccess;
  });
}

TAVRO_API int32_t _kxTavroOrder(SystemRecord* ptSystem, const CameraRecord* ptWanted) {
  // The host learns nothing from this call, failures included.
  return RunGuarded("_kxTavroOrder", kSuccess, [&] {
    if (ptSystem != nullptr && ptWanted != nullptr) {
      tavro::lifecycle::OrderCameras(*ptSystem, ptWanted);
    }
    return kSuccess;
  });
}

TAVRO_API int32_t _kxAttachTavroCamera(SystemRecord* ptSystem, int32_t iCamNum) {
  return RunGuarded("_kxAttachTavroCamera", kFailure,
                    [&] { return tavro::lifecycle::AttachCamera(ptSystem, iCamNum); });
}

TAVRO_API int32_t _kxDetachTavroCamera(SystemRecord* ptSystem, int32_t iCamNum) {
  return RunGuarded("_kxDetachTavroCamera", kFailure,
                    [&] { return tavro::lifecycle::DetachCamera(ptSystem, iCamNum); });
}

TAVRO_API int32_t kxTavroTearDown(SystemRecord* ptSystem) {
  return RunGuarded("kxTavroTearDown", kFailure, [&] {
    if (ptSystem == nullptr) {
      tavro::diagnostics::DebugPrintf("kxTavroTearDown sent NULL pointer\n");
      tavro::diagnostics::FlushStdout();
      return kFailure;
    }
    return tavro::lifecycle::TearDown(*ptSystem);
  });
}

}  // extern "C"
