#include "camera/sim_camera.h"

#include "core/api.h"

namespace oxelsim {

namespace {

const char* AccessTypeName(OXEL_DEVICE_ACCESS_TYPE access) {
  switch (access) {
    case OXEL_DEVICE_ACCESS_TYPE_READ_ONLY:
      return "read-only";
    case OXEL_DEVICE_ACCESS_TYPE_CONTROL:
      return "control";
    case OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE:
      return "exclusive";
    default:
      return "unknown";
  }
}

void CheckAccessType(OXEL_DEVICE_ACCESS_TYPE access) {
  if (access < OXEL_DEVICE_ACCESS_TYPE_READ_ONLY || access > OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": access type " + std::to_string(access) +
             " is not one of 2 (read-only), 3 (control), 4 (exclusive)");
  }
}

}  // namespace

const char* AccessStatusName(OXEL_DEVICE_ACCESS_STATUS status) {
  switch (status) {
    case OXEL_DEVICE_ACCESS_STATUS_READ_WRITE:
      return "ReadWrite";
    case OXEL_DEVICE_ACCESS_STATUS_READ_ONLY:
      return "ReadOnly";
    case OXEL_DEVICE_ACCESS_STATUS_NO_ACCESS:
      return "NoAccess";
    case OXEL_DEVICE_ACCESS_STATUS_BUSY:
      return "Busy";
    case OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE:
      return "OpenReadWrite";
    case OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_ONLY:
      return "OpenReadOnly";
    default:
      return "Unknown";
  }
}

SimCamera::SimCamera(CameraDescription description)
    : description_(std::move(description)),
      features_(description_),
      plugged_(description_.plugged),
      openedElsewhere_(description_.openedElsewhere),
      acquisition_(features_, mutex_, description_.instantFrames) {
  acquisition_.DropFrames(description_.dropFrames);
  acquisition_.IncompleteEvery(description_.incompleteEvery);
}

bool SimCamera::Plugged() const {
  std::lock_guard lock(mutex_);
  return plugged_;
}

uint64_t SimCamera::Generation() const {
  std::lock_guard lock(mutex_);
  return generation_;
}

void SimCamera::Unplug() {
  std::lock_guard lock(mutex_);
  if (!plugged_) return;
  plugged_ = false;
  ++generation_;
  openSession_ = nullptr;
  acquisition_.Unplug();
}

void SimCamera::Replug() {
  std::lock_guard lock(mutex_);
  if (plugged_) return;
  plugged_ = true;
  features_.PowerOn();
}

void SimCamera::SetOpenedElsewhere(bool openedElsewhere) {
  std::lock_guard lock(mutex_);
  openedElsewhere_ = openedElsewhere;
}

void SimCamera::ResetToFile() {
  std::lock_guard lock(mutex_);
  if (plugged_ != description_.plugged) {
    ++generation_;
    openSession_ = nullptr;
  }
  plugged_ = description_.plugged;
  openedElsewhere_ = description_.openedElsewhere;
  features_.Reset();
  acquisition_.Reset();
  acquisition_.DropFrames(description_.dropFrames);
  acquisition_.IncompleteEvery(description_.incompleteEvery);
}

bool SimCamera::Live(const CameraSession* session) const {
  return session != nullptr && !session->closed && session->Generation() == generation_ &&
         plugged_ && openSession_ == session;
}

OXEL_DEVICE_ACCESS_STATUS SimCamera::AccessStatusLocked() const {
  if (!plugged_) return OXEL_DEVICE_ACCESS_STATUS_UNKNOWN;
  if (Live(openSession_)) {
    return openSession_->Access() == OXEL_DEVICE_ACCESS_TYPE_READ_ONLY
               ? OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_ONLY
               : OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE;
  }
  if (openedElsewhere_) return OXEL_DEVICE_ACCESS_STATUS_BUSY;
  return description_.accessStatus;
}

OXEL_DEVICE_ACCESS_STATUS SimCamera::AccessStatus() const {
  std::lock_guard lock(mutex_);
  return AccessStatusLocked();
}

bool SimCamera::IsOpenable(OXEL_DEVICE_ACCESS_TYPE access) const {
  CheckAccessType(access);
  std::lock_guard lock(mutex_);
  return IsOpenableLocked(access);
}

bool SimCamera::IsOpenableLocked(OXEL_DEVICE_ACCESS_TYPE access) const {
  const OXEL_DEVICE_ACCESS_STATUS status = AccessStatusLocked();
  if (status == OXEL_DEVICE_ACCESS_STATUS_READ_WRITE) return true;
  return status == OXEL_DEVICE_ACCESS_STATUS_READ_ONLY &&
         access == OXEL_DEVICE_ACCESS_TYPE_READ_ONLY;
}

std::string SimCamera::UserDefinedName() const {
  std::lock_guard lock(mutex_);
  return features_.TextOr("DeviceUserID", description_.userDefinedName);
}

std::shared_ptr<CameraSession> SimCamera::Open(OXEL_DEVICE_ACCESS_TYPE access) {
  CheckAccessType(access);
  std::lock_guard lock(mutex_);
  const std::string camera = "camera '" + Id() + "'";
  if (!plugged_) Fail(OXEL_RETURN_CODE_NOT_AVAILABLE, camera + " is not connected");
  if (Live(openSession_)) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS,
         camera + " is already open in this process (through another device handle)");
  }
  if (!IsOpenableLocked(access)) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, camera + " cannot be opened with " + AccessTypeName(access) +
                                          " access: its access status is " +
                                          AccessStatusName(AccessStatusLocked()) +
                                          (openedElsewhere_ ? " (opened by another process)" : ""));
  }
  auto session = std::make_shared<CameraSession>(shared_from_this(), generation_, access);
  openSession_ = session.get();
  features_.ClearWriteCounts();
  acquisition_.ClearCounts();
  return session;
}

void SimCamera::Close(CameraSession& session) {
  std::lock_guard lock(mutex_);
  if (Live(&session)) {
    acquisition_.Abort();
    features_.ReleaseTransportLock();
  }
  if (openSession_ == &session) openSession_ = nullptr;
  session.closed = true;
}

void SimCamera::CheckAnswering(const CameraSession& session) const {
  if (Live(&session)) return;
  const std::string camera =
      std::string(CurrentFunction()) + ": camera '" + Id() + "' does not answer: ";
  if (session.closed) Fail(OXEL_RETURN_CODE_ERROR, camera + "its device was closed");
  if (!plugged_) Fail(OXEL_RETURN_CODE_ERROR, camera + "it was unplugged");
  Fail(OXEL_RETURN_CODE_ERROR, camera + "it was unplugged and plugged in again; open it anew");
}

void SimCamera::RunCommand(const CameraSession& session, const std::string& name) {
  CheckAnswering(session);
  if (name == "AcquisitionStart") {
    acquisition_.Start();
  } else if (name == "AcquisitionStop") {
    acquisition_.Stop();
  } else if (name == "AcquisitionAbort") {
    acquisition_.Abort();
  } else if (name == "TriggerSoftware") {
    acquisition_.SoftwareTrigger();
  } else if (name == "UserSetLoad") {
    if (acquisition_.Active() || features_.IntegerOr("TLParamsLocked", 0) != 0) {
      Fail(OXEL_RETURN_CODE_BAD_ACCESS,
           "UserSetLoad refused while acquisition is running or TLParamsLocked is 1 (camera '" +
               Id() + "')");
    }
    features_.LoadUserSet();
    acquisition_.SettingsChanged();
  }
}

size_t SimCamera::FeatureIndex(const std::string& name) const {
  const int index = features_.Find(name);
  if (index < 0) {
    Fail(OXEL_RETURN_CODE_NOT_FOUND,
         std::string(CurrentFunction()) + ": camera '" + Id() + "' has no feature '" + name + "'");
  }
  return static_cast<size_t>(index);
}

void SimCamera::PulseLine0() {
  std::lock_guard lock(mutex_);
  if (!plugged_) return;
  acquisition_.LineEdge(true);
  acquisition_.LineEdge(false);
}

namespace {

// Fault counts are -1 (every one until 0), 0 (none) or more.
void CheckFaultCount(int32_t count, const char* what) {
  if (count < -1) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": " + what +
                                                " count " + std::to_string(count) +
                                                " (use -1 for every one, 0 to stop)");
  }
}

}  // namespace

void SimCamera::DropFrames(int32_t count) {
  CheckFaultCount(count, "frame");
  std::lock_guard lock(mutex_);
  acquisition_.DropFrames(count);
}

void SimCamera::DelayFrames(int32_t count, uint32_t delayMs) {
  CheckFaultCount(count, "frame");
  std::lock_guard lock(mutex_);
  acquisition_.DelayFrames(count, delayMs);
}

void SimCamera::IncompleteFrames(int32_t count) {
  CheckFaultCount(count, "frame");
  std::lock_guard lock(mutex_);
  acquisition_.IncompleteFrames(count);
}

void SimCamera::FailStreamStarts(int32_t count, OXEL_RETURN_CODE code) {
  CheckFaultCount(count, "stream start");
  if (count != 0 && code == OXEL_RETURN_CODE_SUCCESS) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": stream starts cannot fail with code 0 (success)");
  }
  std::lock_guard lock(mutex_);
  acquisition_.FailStreamStarts(count, code);
}

uint64_t SimCamera::IncompleteFramesSent() const {
  std::lock_guard lock(mutex_);
  return acquisition_.IncompleteFramesSent();
}

uint64_t SimCamera::IgnoredTriggers() const {
  std::lock_guard lock(mutex_);
  return acquisition_.IgnoredTriggers();
}

void SimCamera::FailWrites(const std::string& feature, int32_t count, OXEL_RETURN_CODE code) {
  if (count < -1 || (count != 0 && code == OXEL_RETURN_CODE_SUCCESS)) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": " + std::to_string(count) + " writes failing with " +
             std::to_string(code) + " (count -1, 0 or more; the code must not be 0)");
  }
  std::lock_guard lock(mutex_);
  features_.ArmWriteFault(FeatureIndex(feature), count, code);
}

uint64_t SimCamera::WriteCount(const std::string& feature) const {
  std::lock_guard lock(mutex_);
  return features_.WriteCount(FeatureIndex(feature));
}

std::optional<uint64_t> SimCamera::LastFrameId() const {
  std::lock_guard lock(mutex_);
  return acquisition_.LastFrameId();
}

}  // namespace oxelsim
