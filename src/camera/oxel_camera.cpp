#include "camera/oxel_camera.h"

#include <chrono>
#include <exception>

#include "camera/features.h"
#include "diagnostics/debug_output.h"
#include "oxel/core/data_stream.h"
#include "oxel/core/device.h"
#include "oxel/core/device_descriptor.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {
namespace {

constexpr uint32_t kLiveFrameTimeoutMs = 3000;
constexpr int kStopPolls = 500;
constexpr auto kStopPollInterval = std::chrono::milliseconds(10);
constexpr auto kWorkerExitWait = std::chrono::milliseconds(1000);

}  // namespace

OxelCamera::OxelCamera() {
  worker.keepRunning = true;
  worker.thread = std::thread(&OxelCamera::AcquireThread, this);
  diagnostics::StdoutLine("Acquire thread started.");
}

OxelCamera::~OxelCamera() {
  worker.keepRunning = false;
  worker.wakeEvent.Set();
  Stop();
  if (!worker.threadExitEvent.WaitFor(kWorkerExitWait) && dataStream) {
    // The worker is still inside a frame wait; cut it short rather than let
    // it run on an object that is going away.
    try {
      dataStream->KillWait();
    } catch (const std::exception&) {
      // The join below still waits for the wait's own time-out.
    }
  }
  if (worker.thread.joinable()) worker.thread.join();

  formats.clear();
  cameraKey.clear();
  ReleaseDataStream();
  nodeMap.reset();
  device.reset();
  descriptor.reset();
}

void OxelCamera::ReleaseDataStream() {
  if (!dataStream) return;
  try {
    dataStream->Flush(OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL);
    for (const auto& buffer : dataStream->AnnouncedBuffers()) dataStream->RevokeBuffer(buffer);
  } catch (const std::exception&) {
    // The stream is released either way; its own destructor retries.
  }
  dataStream.reset();
}

void OxelCamera::AcquireThread(OxelCamera* camera) {
  if (camera == nullptr) return;
  AcquireWorker& worker = camera->worker;
  worker.threadRunning = true;
  while (worker.keepRunning) {
    worker.wakeEvent.Wait();
    if (!worker.keepRunning) break;
    camera->RunLiveLoop();
  }
  worker.threadRunning = false;
  worker.threadExitEvent.Set();
}

void OxelCamera::RunLiveLoop() {
  // The state is announced before the request is read: Stop writes the
  // request before it reads the state, so either Stop sees the worker busy
  // and waits, or the worker sees the request withdrawn and does nothing.
  worker.workerState = kWorkerFirstFrame;
  while (worker.pendingRequest == kRequestLive) {
    if (!FireSoftwareTrigger()) break;
    if (WaitAndDeliver(kLiveFrameTimeoutMs) != 0) break;
    if (worker.frameDoneEvent != nullptr) worker.frameDoneEvent->Set();
    worker.workerState = kWorkerRunning;
  }
  // Said before the worker counts as idle, so that whoever sees it idle
  // after a failure also sees why.
  if (worker.pendingRequest == kRequestLive) worker.liveEnded = true;
  worker.workerState = kWorkerIdle;
}

bool OxelCamera::StartLive() {
  worker.liveEnded = false;
  if (!device) return false;
  if (!SetTriggerMode(parameters::TriggerModeSoftware, !acquisitionStarted)) return false;
  if (!Start()) return false;
  worker.pendingRequest = kRequestLive;
  // The worker exists from construction to destruction; an auto-reset event
  // keeps the wake-up even if the worker is not waiting yet.
  worker.wakeEvent.Set();
  return true;
}

bool OxelCamera::Stop() {
  worker.pendingRequest = kRequestNone;
  for (int poll = 0; poll < kStopPolls && worker.workerState != kWorkerIdle; ++poll) {
    std::this_thread::sleep_for(kStopPollInterval);
  }
  if (acquisitionStarted) {
    try {
      ExecuteCommand(nodeMap, "AcquisitionAbort");
      if (!dataStream) throw std::runtime_error("Camera has no data stream");
      dataStream->StopAcquisition(OXEL_ACQUISITION_STOP_MODE_DEFAULT);
      WriteInteger(nodeMap, "TLParamsLocked", 0);
    } catch (const std::exception&) {
      // A camera that cannot be stopped counts as stopped: the next Start
      // starts it again from scratch.
    }
  }
  acquisitionStarted = false;
  return worker.workerState == kWorkerIdle;
}

}  // namespace tavro::camera
