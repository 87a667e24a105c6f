// The camera's pixel format ("BGR8" when offered, else "Mono8") and the
// format list reported to the host.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "oxel/core/nodes/enumeration_entry_node.h"

namespace tavro::camera {
namespace {

constexpr const char* kBgr8 = "BGR8";
constexpr const char* kMono8 = "Mono8";

bool SetPixelFormat(OxelCamera& camera, const char* name, int32_t bits) {
  try {
    SelectEntry(camera.nodeMap, "PixelFormat", name);
  } catch (const std::exception&) {
    return false;
  }
  camera.bitsPerPixel = bits;
  camera.pixelFormatName = name;
  return true;
}

}  // namespace

bool OxelCamera::SupportsBgr8() {
  try {
    const auto entries =
        Feature<oxel::core::nodes::EnumerationNode>(nodeMap, "PixelFormat")->Entries();
    for (const auto& entry : entries) {
      if (entry->AccessStatus() == OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE) continue;
      if (entry->AccessStatus() == OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED) continue;
      if (entry->SymbolicValue() == kBgr8) return true;
    }
  } catch (const std::exception&) {
    // An unreadable entry list offers nothing.
  }
  return false;
}

bool OxelCamera::SetBgr8() {
  return SetPixelFormat(*this, kBgr8, 24);
}

bool OxelCamera::SetMono8() {
  return SetPixelFormat(*this, kMono8, 8);
}

void OxelCamera::BuildFormatList() {
  formats.clear();
  if (!aoiLimits) ReadAoiLimits();
  if (aoiLimits) {
    formats.push_back(geometry::FullSensorFormat(*aoiLimits, cameraKey));
    return;
  }
  // Without limits the sensor size is the best description of the image.
  geometry::AoiLimits sensor;
  sensor.maxWidth = widthMax;
  sensor.maxHeight = heightMax;
  formats.push_back(geometry::FullSensorFormat(sensor, cameraKey));
}

std::string OxelCamera::AllFormatsText() const {
  return geometry::AllFormatsText(formats);
}

void OxelCamera::PrintFormats() const {
  geometry::PrintFormats(formats);
}

}  // namespace tavro::camera
