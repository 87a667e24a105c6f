// When a simulated camera sends frames and what they hold. Frames are made
// only while the camera's acquisition runs ("AcquisitionStart" executed, not
// yet stopped or aborted) AND a data stream is attached and grabbing. Then:
//  - every frame trigger selector ("FrameStart", "ExposureStart") with
//    "TriggerMode" Off: free run at the frame rate, on the camera's thread;
//  - a selector On with source "Software": one frame per "TriggerSoftware",
//    made before the command returns;
//  - a selector On with source "Line0": one frame per edge of the selector's
//    "TriggerActivation" (a pulse has one rising and one falling edge).
// A trigger at any other time is ignored. Each frame takes the next frame ID;
// it goes into the oldest queued buffer, or is lost as an underrun.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>

#include "camera/buffer_pool.h"
#include "camera/camera_features.h"
#include "camera/frame_pattern.h"

namespace oxelsim {

class Acquisition {
 public:
  Acquisition(CameraFeatures& features, std::mutex& mutex);
  ~Acquisition();
  Acquisition(const Acquisition&) = delete;
  Acquisition& operator=(const Acquisition&) = delete;

  // All below with the camera's mutex held.
  void Start();
  void Stop();
  bool Active() const { return active_; }

  void SoftwareTrigger();
  void LineEdge(bool rising);

  void AttachStream(BufferPool* pool);
  // Detaches `pool` if it is the attached one.
  void DetachStream(const BufferPool* pool);
  // Something that decides the free run changed (stream start or stop, a
  // trigger or frame-rate feature).
  void SettingsChanged();

  void DropFrames(int32_t count) { dropCount_ = count; }
  std::optional<uint64_t> LastFrameId() const { return lastFrameId_; }
  void Reset();

 private:
  bool Producing() const;
  bool FreeRunning() const;
  bool AcceptsTrigger(const char* source, bool rising) const;
  void ProduceFrame();
  void FreeRun();

  CameraFeatures& features_;
  std::mutex& mutex_;
  FramePattern pattern_;
  BufferPool* pool_ = nullptr;
  bool active_ = false;
  uint64_t nextFrameId_;
  std::optional<uint64_t> lastFrameId_;
  int32_t dropCount_ = 0;

  std::condition_variable wake_;
  uint64_t settingsVersion_ = 0;
  bool quit_ = false;
  std::thread thread_;
};

}  // namespace oxelsim
