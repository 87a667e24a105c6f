// When a simulated camera sends frames and what they hold. Frames are made
// only while the camera's acquisition runs ("AcquisitionStart" executed, not
// yet stopped or aborted) AND a data stream is attached and grabbing. Then:
//  - every frame trigger selector ("FrameStart", "ExposureStart") with
//    "TriggerMode" Off: free run at the frame rate, on the camera's thread;
//  - a selector On with source "Software": one frame per "TriggerSoftware";
//  - a selector On with source "Line0": one frame per edge of the selector's
//    "TriggerActivation" (a pulse has one rising and one falling edge).
// A trigger at any other time is ignored. Each frame takes the next frame ID.
//
// Timing, as a camera without trigger overlap: a triggered frame is read out
// exposure + read-out time after its trigger, and a trigger that arrives
// before that is ignored and counted. The free run starts frames at the frame
// rate, whose maximum already allows for exposure and read-out. A read-out
// frame travels to the host (plus any injected delay) and goes into the
// oldest queued buffer there, or is lost as an underrun. A camera with
// instant frames reads every frame out at its trigger.
//
// What happens to a frame in flight: "AcquisitionStop" lets it finish;
// "AcquisitionAbort", closing the device and unplugging discard what is not
// read out yet; a data stream that stops (or goes away) receives nothing more,
// so everything still travelling to it is lost.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "camera/camera_features.h"
#include "core/api.h"
#include "oxelc/buffer_pool.h"
#include "oxelc/frame_pattern.h"

namespace oxelsim {

class Acquisition {
 public:
  using Clock = std::chrono::steady_clock;

  // `instantFrames`: every frame is read out at its trigger.
  Acquisition(CameraFeatures& features, std::mutex& mutex, bool instantFrames);
  ~Acquisition();
  Acquisition(const Acquisition&) = delete;
  Acquisition& operator=(const Acquisition&) = delete;

  // All below with the camera's mutex held.
  void Start();
  // "AcquisitionStop": no more triggers; a frame being exposed or read out
  // still finishes.
  void Stop();
  // "AcquisitionAbort", a device close: frames not read out yet are lost.
  void Abort();
  // The camera is gone: as an abort, and the attached stream is lost.
  void Unplug();
  bool Active() const { return active_; }

  void SoftwareTrigger();
  void LineEdge(bool rising);

  void AttachStream(BufferPool* pool);
  // Detaches `pool` if it is the attached one.
  void DetachStream(const BufferPool* pool);
  // The attached stream stopped grabbing: nothing travelling reaches it.
  void StreamStopped(const BufferPool* pool);
  // Something that decides the free run changed (stream start or stop, a
  // trigger or frame-rate feature).
  void SettingsChanged();

  // Faults a test arms: counts of the next frames (-1: all until 0).
  void DropFrames(int32_t count) { dropCount_ = count; }
  void DelayFrames(int32_t count, uint32_t delayMs);
  void IncompleteFrames(int32_t count) { incompleteCount_ = count; }
  // One frame in every `period` arrives incomplete, for good (0: none).
  void IncompleteEvery(int32_t period) {
    incompletePeriod_ = period;
    framesToIncomplete_ = period;
  }
  void FailStreamStarts(int32_t count, OXEL_RETURN_CODE code);
  // The code the next stream start fails with (SUCCESS: none), counted off.
  OXEL_RETURN_CODE TakeStreamStartFault();

  std::optional<uint64_t> LastFrameId() const { return lastFrameId_; }
  uint64_t IgnoredTriggers() const { return ignoredTriggers_; }
  // Frames delivered into a buffer marked incomplete.
  uint64_t IncompleteFramesSent() const { return incompleteSent_; }
  // The counts a newly opened camera starts from.
  void ClearCounts() {
    ignoredTriggers_ = 0;
    incompleteSent_ = 0;
  }
  void Reset();

 private:
  struct Frame {
    uint64_t id = 0;
    Clock::time_point exposureStart;
    Clock::time_point readOutEnd;
    Clock::time_point arrival;
    FrameGeometry geometry;
    uint64_t pixelFormat = 0;
    size_t payload = 0;
    bool incomplete = false;
  };

  bool Producing() const;
  bool FreeRunning() const;
  bool AcceptsTrigger(const char* source, bool rising) const;
  void Trigger();
  void BeginFrame(Clock::time_point start);
  void Deliver(const Frame& frame);
  void DiscardUnfinished(Clock::time_point now);
  void EnsureThread();
  void Run();

  CameraFeatures& features_;
  std::mutex& mutex_;
  const bool instantFrames_;
  FramePattern pattern_;
  BufferPool* pool_ = nullptr;
  bool active_ = false;
  uint64_t nextFrameId_;
  std::optional<uint64_t> lastFrameId_;

  // Frames read out or travelling, by arrival time, and when the camera is
  // free for its next trigger.
  std::vector<Frame> inFlight_;
  Clock::time_point busyUntil_{};
  std::optional<Clock::time_point> nextFreeRunStart_;
  uint64_t ignoredTriggers_ = 0;

  int32_t dropCount_ = 0;
  int32_t delayCount_ = 0;
  uint32_t delayMs_ = 0;
  int32_t incompleteCount_ = 0;
  int32_t incompletePeriod_ = 0;
  int32_t framesToIncomplete_ = 0;
  uint64_t incompleteSent_ = 0;
  int32_t failStartCount_ = 0;
  OXEL_RETURN_CODE failStartCode_ = OXEL_RETURN_CODE_SUCCESS;

  std::condition_variable wake_;
  bool quit_ = false;
  std::thread thread_;
};

}  // namespace oxelsim
