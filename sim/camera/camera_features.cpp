#include "camera/camera_features.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "core/api.h"

namespace oxelsim {

namespace {

constexpr size_t kMaxTextLength = 63;

bool IsAoiOrFormat(const std::string& name) {
  return name == "Width" || name == "Height" || name == "OffsetX" || name == "OffsetY" ||
         name == "PixelFormat";
}

// The auto mode that holds a feature's value, if any.
const char* AutoModeOf(const std::string& name) {
  if (name == "ExposureTime") return "ExposureAuto";
  if (name == "Gain") return "GainAuto";
  if (name == "BlackLevel") return "BlackLevelAuto";
  return nullptr;
}

int64_t LastStep(int64_t min, int64_t inc, int64_t limit) {
  if (limit < min) return min;
  return min + (limit - min) / inc * inc;
}

const CameraFeatures::AoiAxis kAoiAxes[] = {
    {"OffsetX", "Width", "WidthMax", &CameraDescription::sensorWidth, &AoiRules::widthMinimum},
    {"OffsetY", "Height", "HeightMax", &CameraDescription::sensorHeight, &AoiRules::heightMinimum},
};

const CameraFeatures::AoiAxis* AxisOfOffset(const std::string& name) {
  for (const auto& axis : kAoiAxes) {
    if (name == axis.offset) return &axis;
  }
  return nullptr;
}

bool OnIncrement(double value, double min, double inc) {
  if (inc <= 0.0) return true;
  const double steps = (value - min) / inc;
  return std::fabs(steps - std::nearbyint(steps)) < 1e-9 * std::max(1.0, std::fabs(steps));
}

}  // namespace

std::string NumberText(double value) {
  char text[64];
  auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

CameraFeatures::CameraFeatures(const CameraDescription& description, std::string owner)
    : description_(&description),
      owner_(owner.empty() ? "camera '" + description.id + "'" : std::move(owner)) {
  Reset();
}

void CameraFeatures::Reset() {
  features_ = description_->features;
  runtime_.assign(features_.size(), Runtime{});
  acquisitionActive_ = false;
  for (const WriteFault& fault : description_->failWrites) {
    const int index = Find(fault.feature);
    if (index >= 0) ArmWriteFault(static_cast<size_t>(index), fault.count, fault.code);
  }
}

void CameraFeatures::LoadUserSet() {
  for (size_t i = 0; i < features_.size(); ++i) {
    const std::string& name = features_[i].name;
    if (name == "TLParamsLocked" || name == "UserSetSelector" || name == "DeviceUserID") continue;
    features_[i].slots = description_->features[i].slots;
  }
}

void CameraFeatures::PowerOn() {
  for (size_t i = 0; i < features_.size(); ++i) {
    if (features_[i].name != "DeviceUserID") features_[i].slots = description_->features[i].slots;
  }
  acquisitionActive_ = false;
}

void CameraFeatures::ReleaseTransportLock() {
  const int index = Find("TLParamsLocked");
  if (index >= 0) StoredSlot(static_cast<size_t>(index)).intValue = 0;
}

int CameraFeatures::Find(const std::string& name) const {
  for (size_t i = 0; i < features_.size(); ++i) {
    if (features_[i].name == name) return static_cast<int>(i);
  }
  return -1;
}

std::string CameraFeatures::SlotKey(const FeatureDefinition& definition) const {
  return definition.selector.empty() ? std::string() : TextOr(definition.selector.c_str(), "");
}

const FeatureSlot& CameraFeatures::StoredSlot(size_t index) const {
  const FeatureDefinition& definition = features_[index];
  auto found = definition.slots.find(SlotKey(definition));
  return found != definition.slots.end() ? found->second : definition.slots.begin()->second;
}

FeatureSlot& CameraFeatures::StoredSlot(size_t index) {
  const CameraFeatures& self = *this;
  return const_cast<FeatureSlot&>(self.StoredSlot(index));
}

FeatureSlot CameraFeatures::Current(size_t index) const {
  FeatureSlot slot = StoredSlot(index);
  ComputeSlot(features_[index], slot);
  return slot;
}

std::string CameraFeatures::Named(const FeatureDefinition& definition) const {
  if (definition.selector.empty()) return definition.name;
  return definition.name + " (" + definition.selector + " " + SlotKey(definition) + ")";
}

void CameraFeatures::ComputeSlot(const FeatureDefinition& definition, FeatureSlot& slot) const {
  const std::string& name = definition.name;
  const int64_t sensorWidth = description_->sensorWidth;
  const int64_t sensorHeight = description_->sensorHeight;
  if (name == "Width") {
    slot.intMax = LastStep(slot.intMin, slot.intInc, sensorWidth - IntegerOr("OffsetX", 0));
  } else if (name == "Height") {
    slot.intMax = LastStep(slot.intMin, slot.intInc, sensorHeight - IntegerOr("OffsetY", 0));
  } else if (const AoiAxis* axis = AxisOfOffset(name)) {
    slot.intMax = LastStep(0, slot.intInc, OffsetRoom(*axis));
  } else if (name == "PayloadSize") {
    slot.intValue = slot.intMin = slot.intMax = PayloadSize();
  } else if (name == "AcquisitionFrameRate") {
    slot.floatMax = FrameRateMaximum().maximum;
    slot.floatValue = std::min(slot.floatValue, slot.floatMax);
  } else if (name == "GainDefault" || name == "BlackLevelDefault") {
    const std::string base = name == "GainDefault" ? "Gain" : "BlackLevel";
    const int index = Find(base);
    if (index >= 0) {
      const FeatureDefinition& original = description_->features[static_cast<size_t>(index)];
      auto defaults = original.slots.find(SlotKey(original));
      const FeatureSlot live = StoredSlot(static_cast<size_t>(index));
      slot.floatMin = live.floatMin;
      slot.floatMax = live.floatMax;
      if (defaults != original.slots.end()) slot.floatValue = defaults->second.floatValue;
    }
  }
}

double CameraFeatures::SensorReadOutRate() const {
  const int64_t height = std::max<int64_t>(1, IntegerOr("Height", description_->sensorHeight));
  return description_->maxFrameRate * static_cast<double>(description_->sensorHeight) /
         static_cast<double>(height);
}

std::optional<double> CameraFeatures::LinkBytesPerSecond() const {
  const int link = Find("DeviceLinkThroughputLimit");
  if (link < 0) return std::nullopt;
  const FeatureSlot limit = StoredSlot(static_cast<size_t>(link));
  const bool limited = TextOr("DeviceLinkThroughputLimitMode", "On") == "On";
  return static_cast<double>(limited ? limit.intValue : limit.intMax);
}

double CameraFeatures::ReadOutSeconds() const {
  double seconds = 1.0 / SensorReadOutRate();
  if (const std::optional<double> bytes = LinkBytesPerSecond()) {
    seconds = std::max(seconds, static_cast<double>(PayloadSize()) / *bytes);
  }
  return seconds;
}

CameraFeatures::FrameRateLimit CameraFeatures::FrameRateMaximum() const {
  double maximum = SensorReadOutRate();
  std::string reason = "sensor read-out at Height " +
                       std::to_string(IntegerOr("Height", description_->sensorHeight)) + ": " +
                       NumberText(maximum) + " Hz";
  const double exposure = FloatOr("ExposureTime", 0.0);
  if (exposure > 0.0) {
    maximum = std::min(maximum, 1e6 / exposure);
    reason +=
        "; ExposureTime " + NumberText(exposure) + " us: " + NumberText(1e6 / exposure) + " Hz";
  }
  if (const std::optional<double> bytes = LinkBytesPerSecond()) {
    const double payload = static_cast<double>(std::max<int64_t>(1, PayloadSize()));
    maximum = std::min(maximum, *bytes / payload);
    reason += "; link " + NumberText(*bytes) + " B/s for PayloadSize " + NumberText(payload) +
              ": " + NumberText(*bytes / payload) + " Hz";
  }
  maximum = std::floor(maximum * 100.0) / 100.0;
  const int rate = Find("AcquisitionFrameRate");
  if (rate >= 0) maximum = std::max(maximum, StoredSlot(static_cast<size_t>(rate)).floatMin);
  return FrameRateLimit{maximum, reason};
}

OXEL_NODE_ACCESS_STATUS CameraFeatures::Access(size_t index) const {
  const FeatureDefinition& definition = features_[index];
  if (definition.access != OXEL_NODE_ACCESS_STATUS_READ_WRITE) return definition.access;
  return WriteRefusal(index).empty() ? definition.access : OXEL_NODE_ACCESS_STATUS_READ_ONLY;
}

std::string CameraFeatures::WriteRefusal(size_t index) const {
  const FeatureDefinition& definition = features_[index];
  switch (definition.access) {
    case OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED:
      return definition.name + " is not implemented";
    case OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE:
      return definition.name + " is not available";
    case OXEL_NODE_ACCESS_STATUS_READ_ONLY:
      return definition.name + " is read-only";
    default:
      break;
  }
  if (IsAoiOrFormat(definition.name)) {
    if (IntegerOr("TLParamsLocked", 0) != 0) {
      return definition.name + " is locked while TLParamsLocked is 1";
    }
    if (acquisitionActive_) {
      return definition.name +
             " cannot change while acquisition is running (AcquisitionStart "
             "executed; execute AcquisitionStop or AcquisitionAbort first)";
    }
  }
  if (const char* autoMode = AutoModeOf(definition.name)) {
    const std::string mode = TextOr(autoMode, "Off");
    if (mode != "Off") return definition.name + " is read-only while " + autoMode + " is " + mode;
  }
  if (definition.name == "DeviceLinkThroughputLimit" &&
      TextOr("DeviceLinkThroughputLimitMode", "On") == "Off") {
    return definition.name + " is read-only while DeviceLinkThroughputLimitMode is Off";
  }
  return {};
}

void CameraFeatures::CheckReadable(size_t index) const {
  const OXEL_NODE_ACCESS_STATUS access = features_[index].access;
  if (access != OXEL_NODE_ACCESS_STATUS_READ_ONLY && access != OXEL_NODE_ACCESS_STATUS_READ_WRITE) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, features_[index].name + " cannot be read: its access is " +
                                          AccessName(access) + " (" + owner_ + ")");
  }
}

void CameraFeatures::BeginWrite(size_t index) {
  Runtime& runtime = runtime_[index];
  ++runtime.writes;
  if (runtime.faultCount != 0) {
    if (runtime.faultCount > 0) --runtime.faultCount;
    const std::string left = runtime.faultCount < 0
                                 ? std::string("every further write")
                                 : std::to_string(runtime.faultCount) + " more writes";
    Fail(runtime.faultCode, features_[index].name + " refused the write: injected fault (" + left +
                                " will fail) (" + owner_ + ")");
  }
  const std::string refusal = WriteRefusal(index);
  if (!refusal.empty()) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, refusal + " (" + owner_ + ")");
  }
}

int64_t CameraFeatures::SensorSize(const AoiAxis& axis) const {
  return description_->*axis.sensorSize;
}

int64_t CameraFeatures::SizeMinimum(const AoiAxis& axis) const {
  const int index = Find(axis.size);
  if (index >= 0) return StoredSlot(static_cast<size_t>(index)).intMin;
  return description_->aoi.*axis.sizeMinimum;
}

int64_t CameraFeatures::OffsetRoom(const AoiAxis& axis) const {
  const int64_t sensor = SensorSize(axis);
  if (description_->aoi.offsetRule == OffsetRule::kStrict) {
    return sensor - IntegerOr(axis.size, sensor);
  }
  return sensor - SizeMinimum(axis);
}

void CameraFeatures::FitSizeToOffset(const AoiAxis& axis, int64_t offset) {
  const int index = Find(axis.size);
  if (index < 0) return;
  FeatureSlot& size = StoredSlot(static_cast<size_t>(index));
  const int64_t room = SensorSize(axis) - offset;
  if (size.intValue > room) size.intValue = LastStep(size.intMin, size.intInc, room);
}

std::string CameraFeatures::Dependency(const FeatureDefinition& definition) const {
  const std::string& name = definition.name;
  if (const AoiAxis* axis = AxisOfOffset(name)) {
    if (description_->aoi.offsetRule == OffsetRule::kStrict) {
      return std::string(" for ") + axis->size + " " + std::to_string(IntegerOr(axis->size, 0));
    }
    return std::string(" for ") + axis->sensor + " " + std::to_string(SensorSize(*axis)) +
           " and minimum " + axis->size + " " + std::to_string(SizeMinimum(*axis));
  }
  if (name == "Width") return " for OffsetX " + std::to_string(IntegerOr("OffsetX", 0));
  if (name == "Height") return " for OffsetY " + std::to_string(IntegerOr("OffsetY", 0));
  if (name == "AcquisitionFrameRate") return " (limits: " + FrameRateMaximum().reason + ")";
  return {};
}

void CameraFeatures::SetInteger(size_t index, int64_t value) {
  BeginWrite(index);
  const FeatureDefinition& definition = features_[index];
  const FeatureSlot slot = Current(index);
  const std::string where = " (" + owner_ + ")";
  if (value < slot.intMin) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " " + std::to_string(value) +
                                            " below minimum " + std::to_string(slot.intMin) +
                                            Dependency(definition) + where);
  }
  if (value > slot.intMax) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " " + std::to_string(value) +
                                            " above maximum " + std::to_string(slot.intMax) +
                                            Dependency(definition) + where);
  }
  if ((value - slot.intMin) % slot.intInc != 0) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
         Named(definition) + " " + std::to_string(value) + " not on the increment: " +
             std::to_string(value) + " - " + std::to_string(slot.intMin) +
             " is not a multiple of " + std::to_string(slot.intInc) + where);
  }
  StoredSlot(index).intValue = value;
  const AoiAxis* axis = AxisOfOffset(definition.name);
  if (axis != nullptr && description_->aoi.offsetRule == OffsetRule::kShrinkSize) {
    FitSizeToOffset(*axis, value);
  }
}

void CameraFeatures::SetFloat(size_t index, double value) {
  BeginWrite(index);
  const FeatureDefinition& definition = features_[index];
  const FeatureSlot slot = Current(index);
  const std::string where = " (" + owner_ + ")";
  if (std::isnan(value)) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " cannot be set to NaN" + where);
  }
  if (value < slot.floatMin) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " " + NumberText(value) +
                                            " below minimum " + NumberText(slot.floatMin) +
                                            Dependency(definition) + where);
  }
  if (value > slot.floatMax) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " " + NumberText(value) +
                                            " above maximum " + NumberText(slot.floatMax) +
                                            Dependency(definition) + where);
  }
  if (!OnIncrement(value, slot.floatMin, slot.floatInc)) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, Named(definition) + " " + NumberText(value) +
                                            " not on the increment " + NumberText(slot.floatInc) +
                                            " above minimum " + NumberText(slot.floatMin) + where);
  }
  StoredSlot(index).floatValue = value;
}

void CameraFeatures::SetBoolean(size_t index, bool value) {
  BeginWrite(index);
  StoredSlot(index).intValue = value ? 1 : 0;
}

void CameraFeatures::SetString(size_t index, const std::string& value) {
  BeginWrite(index);
  if (value.size() > kMaxTextLength) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
         features_[index].name + " text of " + std::to_string(value.size()) +
             " characters is too long: at most " + std::to_string(kMaxTextLength) + " fit (" +
             owner_ + ")");
  }
  StoredSlot(index).text = value;
}

void CameraFeatures::SetEnumeration(size_t index, const std::string& symbolic) {
  BeginWrite(index);
  const FeatureDefinition& definition = features_[index];
  const EnumEntryDefinition* entry = definition.FindEntry(symbolic);
  if (entry == nullptr) {
    std::string names;
    for (const EnumEntryDefinition& each : definition.entries) {
      names += (names.empty() ? "" : ", ") + each.symbolic;
    }
    Fail(OXEL_RETURN_CODE_NOT_FOUND, Named(definition) + " has no entry '" + symbolic +
                                         "' (entries: " + names + ") (" + owner_ + ")");
  }
  if (!entry->available) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         Named(definition) + " entry '" + symbolic + "' is not available (" + owner_ + ")");
  }
  StoredSlot(index).text = symbolic;
}

void CameraFeatures::ArmWriteFault(size_t index, int32_t count, OXEL_RETURN_CODE code) {
  runtime_[index].faultCount = count;
  runtime_[index].faultCode = code;
}

void CameraFeatures::ClearWriteCounts() {
  for (Runtime& runtime : runtime_) runtime.writes = 0;
}

// Stored values are read as stored: computing a range may need another
// feature's value, never its range.
int64_t CameraFeatures::IntegerOr(const char* name, int64_t fallback) const {
  const int index = Find(name);
  if (index < 0) return fallback;
  const size_t at = static_cast<size_t>(index);
  return (features_[at].computed & kComputedValue) != 0 ? Current(at).intValue
                                                        : StoredSlot(at).intValue;
}

double CameraFeatures::FloatOr(const char* name, double fallback) const {
  const int index = Find(name);
  if (index < 0) return fallback;
  const size_t at = static_cast<size_t>(index);
  return (features_[at].computed & kComputedValue) != 0 ? Current(at).floatValue
                                                        : StoredSlot(at).floatValue;
}

std::string CameraFeatures::TextOr(const char* name, const std::string& fallback) const {
  const int index = Find(name);
  return index < 0 ? fallback : StoredSlot(static_cast<size_t>(index)).text;
}

std::string CameraFeatures::EnumFor(const char* name, const std::string& selectorEntry) const {
  const int index = Find(name);
  if (index < 0) return {};
  const FeatureDefinition& definition = features_[static_cast<size_t>(index)];
  auto found = definition.slots.find(definition.selector.empty() ? std::string() : selectorEntry);
  return found == definition.slots.end() ? std::string() : found->second.text;
}

uint64_t CameraFeatures::PixelFormat() const {
  const int index = Find("PixelFormat");
  if (index >= 0) {
    const FeatureDefinition& definition = features_[static_cast<size_t>(index)];
    if (const EnumEntryDefinition* entry =
            definition.FindEntry(StoredSlot(static_cast<size_t>(index)).text)) {
      return static_cast<uint64_t>(entry->value);
    }
  }
  return description_->pixelFormats.front().code;
}

double CameraFeatures::FrameRate() const {
  const int rate = Find("AcquisitionFrameRate");
  if (rate < 0) return FrameRateMaximum().maximum;
  const FeatureSlot slot = Current(static_cast<size_t>(rate));
  return IntegerOr("AcquisitionFrameRateEnable", 1) != 0 ? slot.floatValue : slot.floatMax;
}

int64_t CameraFeatures::PayloadSize() const {
  return IntegerOr("Width", description_->sensorWidth) *
         IntegerOr("Height", description_->sensorHeight) *
         static_cast<int64_t>(BytesPerPixel(PixelFormat()));
}

}  // namespace oxelsim
