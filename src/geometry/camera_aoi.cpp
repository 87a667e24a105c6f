// The camera's sensor size and AOI: reading its limits and writing fitted
// rectangles, offsets before sizes.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::IntegerNode;

int32_t ReadSize(const std::shared_ptr<oxel::core::NodeMap>& nodeMap, const char* name) {
  if (!nodeMap) return -1;
  try {
    return static_cast<int32_t>(Feature<IntegerNode>(nodeMap, name)->Value());
  } catch (const std::exception&) {
    return -1;
  }
}

}  // namespace

int32_t OxelCamera::ReadWidthMax() {
  return ReadSize(nodeMap, "WidthMax");
}

int32_t OxelCamera::ReadHeightMax() {
  return ReadSize(nodeMap, "HeightMax");
}

void OxelCamera::ReadAoiLimits() {
  const char* const features[4] = {"OffsetX", "OffsetY", "Width", "Height"};
  int32_t minimum[4], maximum[4], increment[4];
  try {
    // All minima, then all maxima, then all increments.
    for (int k = 0; k < 4; ++k) {
      minimum[k] = static_cast<int32_t>(Feature<IntegerNode>(nodeMap, features[k])->Minimum());
    }
    for (int k = 0; k < 4; ++k) {
      maximum[k] = static_cast<int32_t>(Feature<IntegerNode>(nodeMap, features[k])->Maximum());
    }
    for (int k = 0; k < 4; ++k) {
      increment[k] = static_cast<int32_t>(Feature<IntegerNode>(nodeMap, features[k])->Increment());
    }
  } catch (const std::exception&) {
    aoiLimits.reset();
    return;
  }
  aoiLimits = geometry::AoiLimits{minimum[0],   minimum[1],   maximum[0],   maximum[1],
                                  increment[0], increment[1], minimum[2],   minimum[3],
                                  maximum[2],   maximum[3],   increment[2], increment[3]};
}

std::string OxelCamera::AoiLimitsText() const {
  return aoiLimits ? geometry::AoiLimitsText(*aoiLimits) : std::string();
}

void OxelCamera::PrintAoiLimits() const {
  geometry::PrintAoiLimits(aoiLimits);
}

bool OxelCamera::SetAoi(geometry::AoiRect& rect) {
  const geometry::AoiRect requested = rect;
  // AOI features are written with the acquisition stopped (the camera locks
  // them while its transport parameters are locked).
  Stop();
  if (aoiLimits) rect = geometry::FitAoi(rect, *aoiLimits, widthMax, heightMax);
  try {
    // Offsets first: they shrink the room left for the size, never the
    // other way round, so a failure leaves the old size in place.
    WriteInteger(nodeMap, "OffsetX", rect.left);
    WriteInteger(nodeMap, "OffsetY", rect.top);
    WriteInteger(nodeMap, "Width", int64_t{rect.right} - rect.left);
    WriteInteger(nodeMap, "Height", int64_t{rect.bottom} - rect.top);
  } catch (const std::exception&) {
    // Some of the rectangle may have reached the camera.
    currentAoi.reset();
    return false;
  }
  // Kept as requested, so that repeating a request the camera cannot take
  // exactly costs nothing.
  currentAoi = requested;
  return true;
}

bool OxelCamera::ApplyRequestedAoi(geometry::AoiRect rect) {
  if (currentAoi && rect == *currentAoi) return true;
  return SetAoi(rect);
}

bool OxelCamera::ApplyFullAoi() {
  return ApplyRequestedAoi({0, 0, widthMax, heightMax});
}

}  // namespace tavro::camera
