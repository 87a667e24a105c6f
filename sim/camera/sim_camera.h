// One simulated camera as hardware: plugged in or not, opened by this process
// or by another one, its feature values and acquisition, and the faults a
// test has armed. It lives as long as its producer file stays loaded: from
// the first load until the last user closes the library. OxelSim_ResetAll
// (or unplugging, for the feature values) reverts it meanwhile.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "camera/acquisition.h"
#include "camera/camera_features.h"
#include "producer/producer_file.h"

namespace oxelsim {

class SimCamera;

// One opening of a camera through a device handle. It stops answering when
// the device is closed or the camera is unplugged (even if plugged in again).
class CameraSession {
 public:
  CameraSession(std::shared_ptr<SimCamera> camera, uint64_t generation,
                OXEL_DEVICE_ACCESS_TYPE access)
      : camera_(std::move(camera)), generation_(generation), access_(access) {}

  SimCamera& Camera() const { return *camera_; }
  const std::shared_ptr<SimCamera>& CameraRef() const { return camera_; }
  uint64_t Generation() const { return generation_; }
  OXEL_DEVICE_ACCESS_TYPE Access() const { return access_; }
  bool closed = false;  // camera mutex held

 private:
  std::shared_ptr<SimCamera> camera_;
  uint64_t generation_;
  OXEL_DEVICE_ACCESS_TYPE access_;
};

class SimCamera : public std::enable_shared_from_this<SimCamera> {
 public:
  explicit SimCamera(CameraDescription description);

  const CameraDescription& Description() const { return description_; }
  const std::string& Id() const { return description_.id; }
  std::mutex& Mutex() const { return mutex_; }

  // Hardware state (each takes the mutex).
  bool Plugged() const;
  uint64_t Generation() const;
  void Unplug();
  void Replug();
  void SetOpenedElsewhere(bool openedElsewhere);
  void ResetToFile();
  OXEL_DEVICE_ACCESS_STATUS AccessStatus() const;
  bool IsOpenable(OXEL_DEVICE_ACCESS_TYPE access) const;
  std::string UserDefinedName() const;
  std::shared_ptr<CameraSession> Open(OXEL_DEVICE_ACCESS_TYPE access);
  void Close(CameraSession& session);

  // With the mutex held: fails with ERROR unless `session` is the camera's
  // live opening.
  void CheckAnswering(const CameraSession& session) const;
  CameraFeatures& Features() { return features_; }
  Acquisition& Frames() { return acquisition_; }
  // Runs a command feature after its write checks passed.
  void RunCommand(const CameraSession& session, const std::string& name);

  // Simulator controls (each takes the mutex).
  void PulseLine0();
  void DropFrames(int32_t count);
  void DelayFrames(int32_t count, uint32_t delayMs);
  void IncompleteFrames(int32_t count);
  void FailStreamStarts(int32_t count, OXEL_RETURN_CODE code);
  uint64_t IgnoredTriggers() const;
  uint64_t IncompleteFramesSent() const;
  void FailWrites(const std::string& feature, int32_t count, OXEL_RETURN_CODE code);
  uint64_t WriteCount(const std::string& feature) const;
  std::optional<uint64_t> LastFrameId() const;

 private:
  OXEL_DEVICE_ACCESS_STATUS AccessStatusLocked() const;
  bool IsOpenableLocked(OXEL_DEVICE_ACCESS_TYPE access) const;
  bool Live(const CameraSession* session) const;
  size_t FeatureIndex(const std::string& name) const;
  void PowerCycleLocked();

  CameraDescription description_;
  mutable std::mutex mutex_;
  CameraFeatures features_;
  bool plugged_;
  bool openedElsewhere_;
  uint64_t generation_ = 1;
  CameraSession* openSession_ = nullptr;
  Acquisition acquisition_;  // last: its thread stops before the rest goes
};

const char* AccessStatusName(OXEL_DEVICE_ACCESS_STATUS status);

}  // namespace oxelsim
