#include "camera/destination_binding.h"

#include <algorithm>

#include "host_interface/acquisition_table.h"
#include "host_interface/slot_camera.h"

namespace tavro::camera {
namespace {

// The plane image's primary plane, for the red, green and blue images.
const PlaneInfo* PlaneOf(const CamImage* image) {
  return image != nullptr ? image->ptPlane : nullptr;
}

// First byte to fill: `firstRow` rows of `pitch` into the plane's memory.
uint8_t* FirstRow(const PlaneInfo& plane, int32_t firstRow, int32_t pitch) {
  if (plane.pBits == nullptr || firstRow < 0 || pitch <= 0) return nullptr;
  return plane.pBits + int64_t{firstRow} * pitch;
}

}  // namespace

Destination DestinationOf(const CamImage& image) {
  Destination destination;
  const PlaneInfo* primary = image.ptPlane;
  if (primary == nullptr) return destination;
  destination.grey = FirstRow(*primary, primary->iFirstRow, primary->iPitch);
  if (destination.grey == nullptr) return destination;
  destination.pitch = primary->iPitch;
  destination.width = std::clamp(primary->iWidth, 0, primary->iPitch);
  destination.height = std::max(primary->iHeight, 0);

  const CameraInfo* info = image.ptCamera;
  if (info == nullptr || info->yColourPlanes == 0) return destination;
  const PlaneInfo* planes[3] = {PlaneOf(image.ptRed), PlaneOf(image.ptGreen),
                                PlaneOf(image.ptBlue)};
  uint8_t* rows[3] = {};
  int32_t width = destination.width;
  int32_t height = destination.height;
  for (int k = 0; k < 3; ++k) {
    const PlaneInfo* plane = planes[k];
    if (plane == nullptr || plane->iPitch < primary->iPitch) return destination;
    // Colour planes start at the primary plane's first row, in their own
    // pitch.
    rows[k] = FirstRow(*plane, primary->iFirstRow, plane->iPitch);
    if (rows[k] == nullptr) return destination;
    width = std::min(width, std::max(plane->iWidth, 0));
    height = std::min(height, std::max(plane->iHeight, 0));
  }
  destination.colour = true;
  destination.red = rows[0];
  destination.green = rows[1];
  destination.blue = rows[2];
  destination.width = width;
  destination.height = height;
  return destination;
}

void BindDestination(CamImage* image, SystemRecord* system, int32_t number, uint32_t userValue) {
  host_interface::TavroCamAcq& entry = host_interface::tTavroCamAcq[number];
  const CameraRecord& record = system->tCam[number];
  const CameraSlot& slot = system->tSlot[number];
  entry.iWidthMax = record.iWidthMax;
  entry.iHeightMax = record.iHeightMax;
  entry.yColour = slot.yColour;
  entry.iUserValue = userValue;
  entry.yAcquiring = 1;
  if (entry.hEvent) entry.hEvent->Reset();

  OxelCamera* camera = host_interface::CameraOf(slot);
  if (camera == nullptr) return;
  camera->worker.frameDoneEvent = entry.hEvent.get();
  Destination destination = DestinationOf(*image);
  destination.sourceIsBgr = slot.yColour != 0;
  destination.copyLimitWidth = entry.iWidthMax;
  destination.copyLimitHeight = entry.iHeightMax;
  camera->destination = destination;
}

}  // namespace tavro::camera
