#include "lifecycle/camera_order.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "camera/acquisition_ops.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/camera_lookup.h"
#include "host_interface/result.h"
#include "host_interface/shared_fields.h"
#include "lifecycle/attach_detach.h"

namespace tavro::lifecycle {
namespace {

using host_interface::kMaxCameras;
using host_interface::kSuccess;
using host_interface::Load;
using CameraFlags = std::array<bool, kMaxCameras>;

constexpr uint32_t kOrderUserValue = 0xFFFFFFFFu;  // -1: no host acquisition of its own

// Stops live acquisition and waits for every single acquisition in
// progress. False when one of them cannot be ended, or its image is no
// longer the host's: the order ends there.
bool EndAcquisitions(SystemRecord& system) {
  uint32_t status = 0;
  {
    camera::LiveRunLock lock;
    if (Load(system.yLive) != 0) {
      if (!host_interface::HasImageMagic(Load(system.ptLiveImage))) {
        // The host no longer vouches for the image, yet its camera must not
        // go on writing into it once yLive says the run is over.
        camera::AbandonLiveRun(system);
        return false;
      }
      // A run that died is ended and reported; a running one is stopped.
      if (!camera::EndDeadLiveRunLocked(system) &&
          camera::LiveAcquireLocked(Load(system.ptLiveImage), 0, kOrderUserValue, &status,
                                    &system) != kSuccess) {
        return false;
      }
    }
  }
  for (int32_t n = 0; n < kMaxCameras; ++n) {
    auto& entry = host_interface::tTavroCamAcq[n];
    if (entry.yAcquiring == 0) continue;
    if (!host_interface::HasImageMagic(entry.ptCamImage)) {
      // The image is dropped unreported, and its camera stopped as a failed
      // wait stops it: a frame still being read out for it would otherwise
      // hold up or become the next acquisition's.
      camera::StopCameraAcquisition(entry.ptCamImage, &system, n, &status);
      entry.yAcquiring = 0;
      return false;
    }
    if (camera::WaitForAcquisition(entry.ptCamImage, n, 0, 0, &status, &system) != kSuccess) {
      return false;
    }
  }
  return true;
}

// Every wanted camera must be the one the plug-in knows at that position
// (same key) and go to a camera number of its own.
bool IsConsistent(const SystemRecord& system, const CameraRecord* wanted, const CameraFlags& want) {
  CameraFlags numberTaken{};
  for (int32_t i = 0; i < kMaxCameras; ++i) {
    if (!want[i]) continue;
    const char* key = system.tCam[i].szCamKey;
    if (key[0] == '\0') return false;
    // Bounded: equal keys end in the same terminator within the field.
    if (std::strncmp(wanted[i].szCamKey, key, sizeof system.tCam[i].szCamKey) != 0) return false;
    const int32_t number = wanted[i].iCamNum;
    if (!host_interface::IsCameraNumber(number) || numberTaken[number]) return false;
    numberTaken[number] = true;
  }
  return true;
}

}  // namespace

void OrderCameras(SystemRecord& system, const CameraRecord* wanted) {
  CameraFlags wasAttached{};
  CameraFlags want{};
  for (int32_t i = 0; i < kMaxCameras; ++i) {
    wasAttached[i] = system.tSlot[i].yAttached != 0;
    want[i] = wanted[i].yEnabled != 0;
  }
  if (!EndAcquisitions(system)) return;
  if (!IsConsistent(system, wanted, want)) return;

  for (int32_t i = 0; i < kMaxCameras; ++i) {
    if (!want[i] && wasAttached[i] && DetachCamera(&system, i) != kSuccess) return;
  }
  for (int32_t i = 0; i < kMaxCameras; ++i) {
    if (want[i] && !wasAttached[i] && AttachCamera(&system, i) != kSuccess) return;
  }
  for (int32_t i = 0; i < kMaxCameras; ++i) system.aiCamIndex[i] = wanted[i].iCamNum;
}

}  // namespace tavro::lifecycle
