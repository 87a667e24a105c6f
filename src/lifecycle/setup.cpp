#include "lifecycle/setup.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "host_interface/acquisition_table.h"
#include "host_interface/result.h"

namespace tavro::lifecycle {
namespace {

using host_interface::EventHandle;

constexpr int32_t kSetupWidthMax = 640;
constexpr int32_t kSetupHeightMax = 480;
constexpr double kSetupExposure = -1.0;
// Host values the plug-in writes but never reads.
constexpr std::array<double, 5> kSlotHostValues = {1.0, 0.0, 0.0, 1.0, 4.0};
constexpr int64_t kSlotHostValue136 = -1;

// Events of an earlier setup that no teardown closed. A camera object of
// that setup may still hold one and signal it from its worker, so they are
// kept open for the life of the process rather than closed under it.
void RetireEvent(EventHandle event) {
  static std::mutex retiredLock;
  static std::vector<EventHandle> retired;
  std::lock_guard lock(retiredLock);
  retired.push_back(std::move(event));
}

void ResetCameraRecord(CameraRecord& record) {
  record.szCamKey[0] = '\0';
  record.iNumFormats = 0;
  std::memset(record.abReserved3012, 0, sizeof record.abReserved3012);
  record.iNumParams = 0;
  record.iCamNum = -1;
  record.iWidthMax = kSetupWidthMax;
  record.iHeightMax = kSetupHeightMax;
  record.yColour = 0;
  record.yEnabled = 0;
}

void ResetSlot(CameraSlot& slot) {
  slot.yAttached = 0;
  slot.yReapply = 1;
  slot.dExposure = kSetupExposure;
  std::copy(kSlotHostValues.begin(), kSlotHostValues.end(), slot.adHostValues);
  slot.iHostValue136 = kSlotHostValue136;
  slot.yColour = 0;
  slot.yLive = 0;
  // Overwritten, not destroyed: the host hands in records whose pointer may
  // be anything, and a camera of an earlier setup stays with that setup.
  slot.pCamera = nullptr;
}

}  // namespace

void ResetCameraRecords(SystemRecord& system) {
  system.iNumCams = 0;
  for (int32_t n = 0; n < host_interface::kMaxCameras; ++n) {
    ResetCameraRecord(system.tCam[n]);
    ResetSlot(system.tSlot[n]);
    system.aiCamIndex[n] = -1;
  }
}

void ResetAcquisitionTable(SystemRecord* system) {
  for (auto& entry : host_interface::tTavroCamAcq) {
    entry.ptSystem = system;
    entry.yColour = 0;
    entry.ptCamImage = nullptr;
    entry.iWidthMax = 0;
    entry.iHeightMax = 0;
    entry.yAcquiring = 0;
    entry.yHwTrigger = 0;
    if (entry.hEvent) RetireEvent(std::move(entry.hEvent));
    entry.hEvent = std::make_unique<platform::ManualResetEvent>(true);
  }
}

void FreeCameraSelection(SystemRecord& system) {
  // The host ABI makes this text the plug-in's: allocated here with new[],
  // so freed here with delete[].
  delete[] system.pszCamSelection;
  system.pszCamSelection = nullptr;
}

void ReplaceCameraSelection(SystemRecord& system, const char* selection) {
  FreeCameraSelection(system);
  if (selection == nullptr || selection[0] == '\0') return;
  const size_t size = std::strlen(selection) + 1;
  auto copy = std::make_unique<char[]>(size);
  std::memcpy(copy.get(), selection, size);
  system.pszCamSelection = copy.release();
}

int32_t SetupCameras(SystemRecord* system, const char* selection, int* widest, int* highest) {
  ResetCameraRecords(*system);
  ResetAcquisitionTable(system);
  // Starting the camera library belongs here, before the selection copy.
  ReplaceCameraSelection(*system, selection);
  // Listing and opening the cameras are not built yet, so no camera can be
  // listed: setup fails the way it does when none is connected.
  (void)widest;
  (void)highest;
  return host_interface::kFailure;
}

}  // namespace tavro::lifecycle
