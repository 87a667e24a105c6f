#include "camera/standard_features.h"

#include <algorithm>

namespace oxelsim {

namespace {

constexpr OXEL_NODE_ACCESS_STATUS kReadOnly = OXEL_NODE_ACCESS_STATUS_READ_ONLY;

FeatureDefinition Make(const std::string& name, OXEL_NODE_TYPE type) {
  FeatureDefinition definition;
  definition.name = name;
  definition.type = type;
  definition.slots[""] = FeatureSlot{};
  return definition;
}

FeatureDefinition Category(const std::string& name, std::vector<std::string> children) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_CATEGORY);
  definition.access = kReadOnly;
  definition.children = std::move(children);
  return definition;
}

FeatureDefinition Integer(const std::string& name, int64_t min, int64_t max, int64_t inc,
                          int64_t value) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_INTEGER);
  FeatureSlot& slot = definition.slots[""];
  slot.intMin = min;
  slot.intMax = max;
  slot.intInc = inc;
  slot.intValue = value;
  return definition;
}

FeatureDefinition Float(const std::string& name, double min, double max, double value,
                        const std::string& unit) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_FLOAT);
  FeatureSlot& slot = definition.slots[""];
  slot.floatMin = min;
  slot.floatMax = max;
  slot.floatValue = value;
  definition.unit = unit;
  return definition;
}

FeatureDefinition Enumeration(const std::string& name, std::vector<std::string> symbols,
                              const std::string& current) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_ENUMERATION);
  for (size_t i = 0; i < symbols.size(); ++i) {
    definition.entries.push_back(EnumEntryDefinition{symbols[i], static_cast<int64_t>(i), true});
  }
  definition.slots[""].text = current;
  return definition;
}

FeatureDefinition Command(const std::string& name) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_COMMAND);
  definition.access = OXEL_NODE_ACCESS_STATUS_WRITE_ONLY;
  return definition;
}

FeatureDefinition Text(const std::string& name, const std::string& value,
                       OXEL_NODE_ACCESS_STATUS access) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_STRING);
  definition.access = access;
  definition.slots[""].text = value;
  return definition;
}

FeatureDefinition Boolean(const std::string& name, bool value) {
  FeatureDefinition definition = Make(name, OXEL_NODE_TYPE_BOOLEAN);
  definition.slots[""].intValue = value ? 1 : 0;
  definition.slots[""].intMax = 1;
  return definition;
}

FeatureDefinition WithComputed(FeatureDefinition definition, unsigned computed) {
  definition.computed = computed;
  if ((computed & kComputedValue) != 0 &&
      (computed & (kComputedMinimum | kComputedMaximum)) == (kComputedMinimum | kComputedMaximum)) {
    definition.access = kReadOnly;
  }
  return definition;
}

FeatureDefinition Selected(FeatureDefinition definition, const std::string& selector) {
  definition.selector = selector;
  return definition;
}

FeatureDefinition Unavailable(FeatureDefinition definition, const std::string& symbolic) {
  for (EnumEntryDefinition& entry : definition.entries) {
    if (entry.symbolic == symbolic) entry.available = false;
  }
  return definition;
}

// The largest value min + k * inc that does not exceed `limit`.
int64_t LastStep(int64_t min, int64_t inc, int64_t limit) {
  if (limit < min) return min;
  return min + (limit - min) / inc * inc;
}

FeatureDefinition PixelFormatFeature(const CameraDescription& camera) {
  FeatureDefinition definition = Make("PixelFormat", OXEL_NODE_TYPE_ENUMERATION);
  for (const PixelFormatDefinition& format : camera.pixelFormats) {
    definition.entries.push_back(
        EnumEntryDefinition{format.name, static_cast<int64_t>(format.code), format.available});
    if (format.available && definition.slots[""].text.empty())
      definition.slots[""].text = format.name;
  }
  return definition;
}

}  // namespace

std::vector<FeatureDefinition> StandardFeatures(const CameraDescription& camera) {
  const AoiRules& aoi = camera.aoi;
  const int64_t fullWidth = LastStep(aoi.widthMinimum, aoi.widthIncrement, camera.sensorWidth);
  const int64_t fullHeight = LastStep(aoi.heightMinimum, aoi.heightIncrement, camera.sensorHeight);
  const unsigned computedRange = kComputedMinimum | kComputedMaximum;
  const unsigned computedAll = computedRange | kComputedValue;

  std::vector<FeatureDefinition> features;
  features.push_back(
      Category("Root", {"DeviceControl", "ImageFormatControl", "AcquisitionControl",
                        "AnalogControl", "TransportLayerControl", "UserSetControl", "LUTControl"}));
  features.push_back(Category(
      "DeviceControl", {"DeviceVendorName", "DeviceModelName", "DeviceSerialNumber", "DeviceUserID",
                        "DeviceLinkThroughputLimitMode", "DeviceLinkThroughputLimit"}));
  features.push_back(Text("DeviceVendorName", camera.vendor, kReadOnly));
  features.push_back(Text("DeviceModelName", camera.model, kReadOnly));
  features.push_back(Text("DeviceSerialNumber", camera.serial, kReadOnly));
  features.push_back(
      Text("DeviceUserID", camera.userDefinedName, OXEL_NODE_ACCESS_STATUS_READ_WRITE));
  features.push_back(Enumeration("DeviceLinkThroughputLimitMode", {"On", "Off"}, "On"));
  FeatureDefinition throughput =
      Integer("DeviceLinkThroughputLimit", 10'000'000, 400'000'000, 4, 400'000'000);
  throughput.unit = "B/s";
  features.push_back(throughput);

  features.push_back(Category("ImageFormatControl", {"WidthMax", "HeightMax", "Width", "Height",
                                                     "OffsetX", "OffsetY", "PixelFormat"}));
  features.push_back(WithComputed(
      Integer("WidthMax", camera.sensorWidth, camera.sensorWidth, 1, camera.sensorWidth),
      computedAll));
  features.push_back(WithComputed(
      Integer("HeightMax", camera.sensorHeight, camera.sensorHeight, 1, camera.sensorHeight),
      computedAll));
  features.push_back(WithComputed(
      Integer("Width", aoi.widthMinimum, fullWidth, aoi.widthIncrement, fullWidth), computedRange));
  features.push_back(WithComputed(
      Integer("Height", aoi.heightMinimum, fullHeight, aoi.heightIncrement, fullHeight),
      computedRange));
  features.push_back(
      WithComputed(Integer("OffsetX", 0, 0, aoi.offsetXIncrement, 0), computedRange));
  features.push_back(
      WithComputed(Integer("OffsetY", 0, 0, aoi.offsetYIncrement, 0), computedRange));
  features.push_back(PixelFormatFeature(camera));

  features.push_back(Category(
      "AcquisitionControl",
      {"AcquisitionMode", "AcquisitionStart", "AcquisitionStop", "AcquisitionAbort",
       "TriggerSelector", "TriggerMode", "TriggerSource", "TriggerActivation", "TriggerSoftware",
       "ExposureAuto", "ExposureTime", "AcquisitionFrameRateEnable", "AcquisitionFrameRate"}));
  features.push_back(Unavailable(
      Enumeration("AcquisitionMode", {"Continuous", "SingleFrame", "MultiFrame"}, "Continuous"),
      "MultiFrame"));
  features.push_back(Command("AcquisitionStart"));
  features.push_back(Command("AcquisitionStop"));
  features.push_back(Command("AcquisitionAbort"));
  features.push_back(
      Unavailable(Enumeration("TriggerSelector", {"FrameStart", "ExposureStart", "FrameBurstStart"},
                              "FrameStart"),
                  "FrameBurstStart"));
  features.push_back(Selected(Enumeration("TriggerMode", {"Off", "On"}, "Off"), "TriggerSelector"));
  features.push_back(
      Selected(Unavailable(Enumeration("TriggerSource", {"Software", "Line0", "Line1"}, "Software"),
                           "Line1"),
               "TriggerSelector"));
  features.push_back(
      Selected(Enumeration("TriggerActivation", {"RisingEdge", "FallingEdge"}, "RisingEdge"),
               "TriggerSelector"));
  features.push_back(Command("TriggerSoftware"));
  features.push_back(Enumeration("ExposureAuto", {"Off", "Once", "Continuous"}, "Off"));
  features.push_back(Float("ExposureTime", 20.0, 1'000'000.0, 5000.0, "us"));
  features.push_back(Boolean("AcquisitionFrameRateEnable", true));
  features.push_back(WithComputed(
      Float("AcquisitionFrameRate", 1.0, camera.maxFrameRate, camera.maxFrameRate, "Hz"),
      kComputedMaximum));

  features.push_back(Category(
      "AnalogControl", {"GainSelector", "Gain", "GainDefault", "GainAuto", "BlackLevelSelector",
                        "BlackLevel", "BlackLevelDefault", "BlackLevelAuto", "BalanceWhiteAuto"}));
  features.push_back(Enumeration("GainSelector", {"AnalogAll", "DigitalAll"}, "AnalogAll"));
  features.push_back(Selected(Float("Gain", 0.0, 24.0, 0.0, "dB"), "GainSelector"));
  features.push_back(Selected(WithComputed(Float("GainDefault", 0.0, 24.0, 0.0, "dB"), computedAll),
                              "GainSelector"));
  features.push_back(Enumeration("GainAuto", {"Off", "Once", "Continuous"}, "Off"));
  features.push_back(Enumeration("BlackLevelSelector", {"All"}, "All"));
  features.push_back(Selected(Float("BlackLevel", 0.0, 32.0, 0.0, ""), "BlackLevelSelector"));
  features.push_back(
      Selected(WithComputed(Float("BlackLevelDefault", 0.0, 32.0, 0.0, ""), computedAll),
               "BlackLevelSelector"));
  features.push_back(Enumeration("BlackLevelAuto", {"Off", "Continuous"}, "Off"));
  features.push_back(Enumeration("BalanceWhiteAuto", {"Off", "Once", "Continuous"}, "Off"));

  features.push_back(Category("TransportLayerControl", {"PayloadSize", "TLParamsLocked"}));
  features.push_back(WithComputed(Integer("PayloadSize", 0, 0, 1, 0), computedAll));
  features.push_back(Integer("TLParamsLocked", 0, 1, 1, 0));

  features.push_back(Category("UserSetControl", {"UserSetSelector", "UserSetLoad"}));
  features.push_back(Enumeration("UserSetSelector", {"Default", "UserSet1"}, "Default"));
  features.push_back(Command("UserSetLoad"));

  features.push_back(Category("LUTControl", {"LUTValueAll"}));
  FeatureDefinition lut = Make("LUTValueAll", OXEL_NODE_TYPE_REGISTER);
  lut.registerLength = 1024;
  features.push_back(lut);
  return features;
}

}  // namespace oxelsim
