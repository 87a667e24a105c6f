// The live feature values of one simulated camera and the rules a GenICam
// camera applies to them: access (read-only, locked by TLParamsLocked or a
// running acquisition, held by an auto mode), ranges and increments, values
// that depend on others (PayloadSize, the AOI limits under the camera's offset
// rule, the frame-rate limit), injected write faults and write counts. Not
// locked: the camera's mutex is held by every caller.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "producer/producer_file.h"

namespace oxelsim {

class CameraFeatures {
 public:
  // `owner` names the features' owner in error texts (default: "camera 'ID'").
  explicit CameraFeatures(const CameraDescription& description, std::string owner = "");

  // Back to the producer file's values; write counts and faults too.
  void Reset();
  // Loads the file's values into every feature a user set holds.
  void LoadUserSet();
  // A camera powered up again: the file's values, except "DeviceUserID",
  // which the camera keeps in its flash memory. Counts and faults stay.
  void PowerOn();
  // The host's control channel is gone: transport parameters are unlocked.
  void ReleaseTransportLock();

  size_t Count() const { return features_.size(); }
  const FeatureDefinition& Definition(size_t index) const { return features_[index]; }
  // Index of the feature, or -1.
  int Find(const std::string& name) const;

  OXEL_NODE_ACCESS_STATUS Access(size_t index) const;
  // The slot of the selector's current entry with the computed parts filled in.
  FeatureSlot Current(size_t index) const;

  // Every write first counts, then meets an armed fault, then the access and
  // range rules. Failures throw ApiError with the matching code.
  void BeginWrite(size_t index);
  void SetInteger(size_t index, int64_t value);
  void SetFloat(size_t index, double value);
  void SetBoolean(size_t index, bool value);
  void SetString(size_t index, const std::string& value);
  void SetEnumeration(size_t index, const std::string& symbolic);
  // Fails unless the feature can be read now.
  void CheckReadable(size_t index) const;

  void ArmWriteFault(size_t index, int32_t count, OXEL_RETURN_CODE code);
  uint64_t WriteCount(size_t index) const { return runtime_[index].writes; }
  void ClearWriteCounts();

  // Named values for the camera's own logic; absent features give `fallback`.
  int64_t IntegerOr(const char* name, int64_t fallback) const;
  double FloatOr(const char* name, double fallback) const;
  std::string TextOr(const char* name, const std::string& fallback) const;
  // The enumeration's value for one entry of its selector.
  std::string EnumFor(const char* name, const std::string& selectorEntry) const;

  uint64_t PixelFormat() const;
  int64_t PayloadSize() const;
  // Frames per second of the free run: "AcquisitionFrameRate" when enabled,
  // else the camera's current maximum.
  double FrameRate() const;
  // Time to read a frame out of the camera: the sensor at the current
  // "Height", or the link for "PayloadSize" bytes when that is slower.
  double ReadOutSeconds() const;

  // A running acquisition locks the AOI and the pixel format.
  void SetAcquisitionActive(bool active) { acquisitionActive_ = active; }
  const std::string& Owner() const { return owner_; }

  // One direction of the AOI: its offset, size and sensor-size features.
  struct AoiAxis {
    const char* offset;
    const char* size;
    const char* sensor;
    int64_t CameraDescription::*sensorSize;
    int64_t AoiRules::*sizeMinimum;
  };

 private:
  struct Runtime {
    uint64_t writes = 0;
    int32_t faultCount = 0;
    OXEL_RETURN_CODE faultCode = OXEL_RETURN_CODE_SUCCESS;
  };
  struct FrameRateLimit {
    double maximum;
    std::string reason;
  };

  const FeatureSlot& StoredSlot(size_t index) const;
  FeatureSlot& StoredSlot(size_t index);
  std::string SlotKey(const FeatureDefinition& definition) const;
  void ComputeSlot(const FeatureDefinition& definition, FeatureSlot& slot) const;
  FrameRateLimit FrameRateMaximum() const;
  // Frames per second the sensor reads out at the current "Height".
  double SensorReadOutRate() const;
  // The link's limit in bytes per second (none without the feature).
  std::optional<double> LinkBytesPerSecond() const;
  std::string WriteRefusal(size_t index) const;
  std::string Dependency(const FeatureDefinition& definition) const;
  int64_t SensorSize(const AoiAxis& axis) const;
  int64_t SizeMinimum(const AoiAxis& axis) const;
  // How far the offset may go under the camera's offset rule.
  int64_t OffsetRoom(const AoiAxis& axis) const;
  // A new offset that leaves the size no room shrinks the size.
  void FitSizeToOffset(const AoiAxis& axis, int64_t offset);
  std::string Named(const FeatureDefinition& definition) const;
  void ApplyDescription(bool userSetOnly);

  const CameraDescription* description_;
  std::string owner_;
  std::vector<FeatureDefinition> features_;
  std::vector<Runtime> runtime_;
  bool acquisitionActive_ = false;
};

// Shortest text that reads back as the same double: 87.3, 20, 0.5.
std::string NumberText(double value);

}  // namespace oxelsim
