// Gain ("Gain" on the selected gain) as percent of its range, and black
// level ("BlackLevel") on a 0..255 scale of its range.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "parameters/host_scaling.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::FloatNode;

// Caches the range of a read-write float feature. False (and both values 0)
// unless the feature is read-write; a failure while reading the range still
// answers true with what was read.
bool DiscoverRange(const std::shared_ptr<oxel::core::NodeMap>& nodeMap, const char* name,
                   double& minimum, double& range) {
  minimum = 0.0;
  range = 0.0;
  const auto node = ReadWriteFeature<FloatNode>(nodeMap, name);
  if (!node) return false;
  try {
    minimum = node->Minimum();
    range = node->Maximum() - minimum;
  } catch (const std::exception&) {
  }
  return true;
}

// Reads a float feature in host units; `failure` when it cannot be read.
int32_t ReadScaled(const std::shared_ptr<oxel::core::NodeMap>& nodeMap, const char* name,
                   const parameters::LinearScale& scale, int32_t failure) {
  try {
    return scale.ToHost(ReadFloat(nodeMap, name));
  } catch (const std::exception&) {
    return failure;
  }
}

bool WriteFloat(const std::shared_ptr<oxel::core::NodeMap>& nodeMap, const char* name,
                double value) {
  try {
    Feature<FloatNode>(nodeMap, name)->SetValue(value);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

parameters::LinearScale GainScale(const OxelCamera& camera) {
  return {camera.gainMinimum, camera.gainRange, 100};
}

parameters::LinearScale BlackLevelScale(const OxelCamera& camera) {
  return {camera.blackLevelMinimum, camera.blackLevelRange, 255};
}

}  // namespace

bool OxelCamera::SetGainSelector(const std::string& entry) {
  try {
    SelectEntry(nodeMap, "GainSelector", entry);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

bool OxelCamera::DiscoverGain() {
  gainMinimum = 0.0;
  gainRange = 0.0;
  // The first selector the camera knows decides which gain "Gain" means; a
  // camera without a selector keeps its own.
  if (!SetGainSelector("AnalogAll") && !SetGainSelector("DigitalAll")) SetGainSelector("All");
  return DiscoverRange(nodeMap, "Gain", gainMinimum, gainRange);
}

int32_t OxelCamera::GetGain() {
  return ReadScaled(nodeMap, "Gain", GainScale(*this), -1);
}

bool OxelCamera::SetGain(int32_t percent) {
  const double value = GainScale(*this).ToCamera(percent);
  if (!(value >= 0.0)) return false;
  return WriteFloat(nodeMap, "Gain", value);
}

int32_t OxelCamera::GetGainDefault() {
  return ReadScaled(nodeMap, "GainDefault", GainScale(*this), 1);
}

bool OxelCamera::DiscoverBlackLevel() {
  return DiscoverRange(nodeMap, "BlackLevel", blackLevelMinimum, blackLevelRange);
}

int32_t OxelCamera::GetBlackLevel() {
  // Only monochrome images have a black level the host can relate to.
  if (pixelFormatName != "Mono8") return -1;
  return ReadScaled(nodeMap, "BlackLevel", BlackLevelScale(*this), -1);
}

bool OxelCamera::SetBlackLevel(int32_t level) {
  return WriteFloat(nodeMap, "BlackLevel", BlackLevelScale(*this).ToCamera(level));
}

int32_t OxelCamera::GetBlackLevelDefault() {
  return ReadScaled(nodeMap, "BlackLevelDefault", BlackLevelScale(*this), -1);
}

}  // namespace tavro::camera
