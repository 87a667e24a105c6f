// The contents of a simulator producer file (a JSON document with the .cti
// extension): one system, its interfaces and their cameras. The format is
// described in docs/simulator-producer-files.md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "camera/feature_definition.h"
#include "oxel/oxel_c.h"

namespace oxelsim {

struct PixelFormatDefinition {
  std::string name;
  uint64_t code = 0;  // PFNC
  bool available = true;
};

struct WriteFault {
  std::string feature;
  int32_t count = 0;
  OXEL_RETURN_CODE code = OXEL_RETURN_CODE_ERROR;
};

// How a camera limits its offsets. Many cameras fix the offset maxima at the
// sensor size less the minimum size and shrink the size when a new offset
// leaves it no room; stricter ones compute the maxima from the current size
// and refuse such an offset.
enum class OffsetRule { kShrinkSize, kStrict };

struct AoiRules {
  OffsetRule offsetRule = OffsetRule::kShrinkSize;
  int64_t offsetXIncrement = 1;
  int64_t offsetYIncrement = 1;
  int64_t widthIncrement = 1;
  int64_t heightIncrement = 1;
  int64_t widthMinimum = 1;
  int64_t heightMinimum = 1;
};

struct CameraDescription {
  std::string id;
  std::string vendor;
  std::string model;
  std::string serial;
  std::string userDefinedName;
  std::string displayName;
  std::string tlType;
  OXEL_DEVICE_ACCESS_STATUS accessStatus = OXEL_DEVICE_ACCESS_STATUS_READ_WRITE;
  bool plugged = true;
  bool openedElsewhere = false;
  int64_t sensorWidth = 0;
  int64_t sensorHeight = 0;
  AoiRules aoi;
  std::vector<PixelFormatDefinition> pixelFormats;
  double maxFrameRate = 0.0;   // sensor read-out limit at full height
  bool instantFrames = false;  // every frame read out at its trigger
  size_t dataStreamCount = 1;
  size_t minBufferCount = 3;
  bool definesPayloadSize = true;
  int32_t dropFrames = 0;
  // Every this many frames one arrives incomplete (0: none).
  int32_t incompleteEvery = 0;
  std::vector<WriteFault> failWrites;
  std::vector<FeatureDefinition> features;  // complete: defaults with the file's changes

  const FeatureDefinition* FindFeature(const std::string& name) const;
};

struct InterfaceDescription {
  std::string id;
  std::string displayName;
  std::vector<CameraDescription> cameras;
};

struct SystemDescription {
  std::string path;
  std::string vendor;
  std::string id;
  std::string displayName;
  std::vector<InterfaceDescription> interfaces;
};

// Reads and checks a producer file. Fails with CTI_LOADING_ERROR and a text
// naming the file, the place (JSON pointer or line and column) and what was
// expected.
SystemDescription LoadProducerFile(const std::string& path);
SystemDescription ParseProducerText(const std::string& path, const std::string& text);

// Pixel formats the simulator can produce: "Mono8", "BGR8".
uint64_t PixelFormatCode(const std::string& name);  // 0 when unknown
size_t BytesPerPixel(uint64_t code);

}  // namespace oxelsim
