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
constexpr auto kStopWait = std::chrono::seconds(5);
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
  bool triggered = NextLiveTrigger();
  while (triggered) {
    // A stop lets the frame in progress arrive and be delivered, so the
    // image left after a stop is the newest.
    const Taken taken = TakeFrame(kLiveFrameTimeoutMs);
    if (taken.incomplete) {
      // A frame torn on the link (a lost packet) is skipped, not shown; the
      // camera itself still works, so the run goes on with the next one.
      ++worker.skippedFrames;
      triggered = NextLiveTrigger();
      continue;
    }
    if (!taken.buffer) break;
    // The camera exposes and reads out the next frame while this one is
    // delivered, when it has a buffer to fill meanwhile.
    const bool overlap = HasQueuedBuffer();
    if (overlap) triggered = NextLiveTrigger();
    if (DeliverTaken(taken.buffer) != 0) break;
    if (worker.frameDoneEvent != nullptr) worker.frameDoneEvent->Set();
    worker.workerState = kWorkerRunning;
    if (!overlap) triggered = NextLiveTrigger();
  }
  // Said before the worker counts as idle, so that whoever sees it idle
  // after a failure also sees why.
  if (worker.pendingRequest == kRequestLive && worker.liveDied != nullptr) *worker.liveDied = true;
  worker.workerState = kWorkerIdle;
  worker.idleEvent.Set();
}

bool OxelCamera::NextLiveTrigger() {
  if (worker.pendingRequest != kRequestLive) return false;
  // One trigger, one frame: a frame that came without being asked for is
  // not shown as this trigger's.
  ReturnFinishedFrames();
  return FireSoftwareTrigger();
}

bool OxelCamera::StartLive() {
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
  // The event may still hold an earlier idle moment, so the state decides.
  const auto deadline = std::chrono::steady_clock::now() + kStopWait;
  while (worker.workerState != kWorkerIdle) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    worker.idleEvent.WaitFor(left);
  }
  if (acquisitionStarted || restPending) restPending = !RestSteps(true, true, true);
  acquisitionStarted = false;
  return worker.workerState == kWorkerIdle;
}

bool OxelCamera::RestSteps(bool abort, bool stopStream, bool unlock) {
  // A refused abort must not keep the stream grabbing or the parameters
  // locked: each step is tried whatever the one before did.
  bool done = true;
  const auto attempt = [&done](auto step) {
    try {
      step();
    } catch (const std::exception&) {
      done = false;
    }
  };
  if (abort) attempt([&] { ExecuteCommand(nodeMap, "AcquisitionAbort"); });
  if (stopStream) {
    attempt([&] {
      if (!dataStream) throw std::runtime_error("Camera has no data stream");
      dataStream->StopAcquisition(OXEL_ACQUISITION_STOP_MODE_DEFAULT);
    });
  }
  if (unlock) attempt([&] { WriteInteger(nodeMap, "TLParamsLocked", 0); });
  return done;
}

}  // namespace tavro::camera
