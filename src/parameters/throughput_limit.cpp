// The link throughput limit ("DeviceLinkThroughputLimit") as percent of its
// range, in whole increments above its minimum.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "parameters/host_scaling.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::IntegerNode;

constexpr const char* kThroughputLimit = "DeviceLinkThroughputLimit";

parameters::ThroughputScale Scale(const OxelCamera& camera) {
  return {camera.throughputMinimum, camera.throughputRange, camera.throughputIncrement};
}

}  // namespace

bool OxelCamera::DiscoverThroughputLimit() {
  throughputMinimum = 0;
  throughputRange = 0;
  const auto node = ReadWriteFeature<IntegerNode>(nodeMap, kThroughputLimit);
  if (!node) return false;
  try {
    throughputMinimum = node->Minimum();
    throughputRange = node->Maximum() - throughputMinimum;
    throughputIncrement = node->Increment();
  } catch (const std::exception&) {
    // The row is supported; the scale keeps what could be read.
  }
  return true;
}

int32_t OxelCamera::GetThroughputLimit() {
  try {
    return Scale(*this).ToHost(Feature<IntegerNode>(nodeMap, kThroughputLimit)->Value());
  } catch (const std::exception&) {
    return -1;
  }
}

bool OxelCamera::SetThroughputLimit(int32_t percent) {
  Stop();
  try {
    Feature<IntegerNode>(nodeMap, kThroughputLimit)->SetValue(Scale(*this).ToCamera(percent));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace tavro::camera
