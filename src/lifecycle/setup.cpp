#include "lifecycle/setup.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "camera/oxel_camera.h"
#include "diagnostics/debug_output.h"
#include "host_interface/acquisition_table.h"
#include "host_interface/result.h"
#include "host_interface/slot_camera.h"
#include "lifecycle/camera_list.h"
#include "lifecycle/open_camera.h"
#include "oxel/core/library.h"
#include "parameters/discovery.h"

namespace tavro::lifecycle {
namespace {

using host_interface::EventHandle;

constexpr int32_t kSetupWidthMax = 640;
constexpr int32_t kSetupHeightMax = 480;
constexpr double kSetupExposure = -1.0;

// Whether a setup started the camera library and no teardown has closed it
// since: a repeated setup keeps that one start instead of adding another
// that no teardown would close.
bool libraryStarted = false;

// Events of an earlier setup that a camera object elsewhere (one attached
// through another system record) may still signal from its worker: kept
// open for the life of the process rather than closed under it.
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
  parameters::WriteSlotHostValues(slot);
  slot.yColour = 0;
  slot.yLive = 0;
  // Overwritten: the plug-in's own cameras were released before, anything
  // else here is bytes of the host's.
  slot.pCamera = nullptr;
}

// Cameras of an earlier setup that no teardown released: left in place
// they would stay open, and an open camera is no longer listed. The live
// run and the acquisitions end with them, unreported: the host is starting
// afresh.
void ReleaseEarlierCameras(SystemRecord& system) {
  for (CameraSlot& slot : system.tSlot) {
    if (host_interface::HoldsOwnedCamera(slot)) host_interface::TakeCamera(slot).reset();
  }
}

void StartCameraLibrary() {
  if (libraryStarted) return;
  oxel::Library::Initialize();
  libraryStarted = true;
}

// Keys longer than the record's field are cut after 62 characters.
void CopyCameraKey(CameraRecord& record, const char* key) {
  const size_t length = std::min(std::strlen(key), sizeof record.szCamKey - 1);
  std::memcpy(record.szCamKey, key, length);
  record.szCamKey[length] = '\0';
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
    // No camera object left means no worker that could still set the event.
    if (entry.hEvent && host_interface::AnyOwnedCamera()) RetireEvent(std::move(entry.hEvent));
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

void CloseCameraLibrary() {
  libraryStarted = false;
  oxel::Library::Close();
}

int32_t SetupCameras(SystemRecord* system, const char* selection, int* widest, int* highest) {
  ReleaseEarlierCameras(*system);
  ResetCameraRecords(*system);
  ResetAcquisitionTable(system);
  StartCameraLibrary();
  ReplaceCameraSelection(*system, selection);

  int32_t count = MakeListOfAllCameras(selection);
  if (count < 1) {
    diagnostics::DebugPrintf("No Tavro cameras connected\n");
    diagnostics::FlushStdout();
    return host_interface::kFailure;
  }
  diagnostics::StdoutLine("The number of Oxel cameras connected = ", count);
  if (count > host_interface::kMaxCameras) {
    diagnostics::DebugPrintf("# of Tavro cameras reduced from %d to %d\n", count,
                             host_interface::kMaxCameras);
    diagnostics::FlushStdout();
    count = host_interface::kMaxCameras;
  }

  // A camera that cannot be bound or opened gives its number to the next.
  int32_t opened = 0;
  int32_t widestSeen = 0;
  int32_t highestSeen = 0;
  for (int32_t i = 0; i < count; ++i) {
    auto camera = std::make_unique<camera::OxelCamera>();
    const CameraKey key = GetListedCameraKey(i);
    if (!key || BindCamera(camera.get(), key.get()) < 0 || !OpenCamera(*camera)) continue;
    host_interface::AdoptCamera(system->tSlot[opened], std::move(camera));
    CopyCameraKey(system->tCam[opened], key.get());
    parameters::DiscoverParameters(*system, opened);
    widestSeen = std::max(widestSeen, system->tCam[opened].iWidthMax);
    highestSeen = std::max(highestSeen, system->tCam[opened].iHeightMax);
    ++opened;
  }
  system->iNumCams = opened;
  *widest = widestSeen;
  *highest = highestSeen;
  return host_interface::kSuccess;
}

}  // namespace tavro::lifecycle
