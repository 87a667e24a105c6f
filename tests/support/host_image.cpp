#include "support/host_image.h"

#include <atomic>
#include <thread>

namespace tavro::testing {

HostPlane::HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow)
    : memory(static_cast<size_t>(pitch > 0 ? pitch : 0) * (firstRow + height), kFill) {
  info.pBits = memory.data();
  info.iWidth = width;
  info.iHeight = height;
  info.iPitch = pitch;
  info.iFirstRow = firstRow;
}

HostImage::HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes) {
  // A few spare bytes per row and rows above the image, as host planes have.
  const int32_t pitch = width + 5;
  grey = std::make_unique<HostPlane>(width, height, pitch, 2);
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;
  image.ptPlane = &grey->info;
  info.iCamId = cameraId;
  info.yColourPlanes = colourPlanes ? 1 : 0;
  if (!colourPlanes) return;
  red = std::make_unique<HostPlane>(width, height, pitch, 2);
  green = std::make_unique<HostPlane>(width, height, pitch, 2);
  blue = std::make_unique<HostPlane>(width, height, pitch, 2);
  redImage.ptPlane = &red->info;
  greenImage.ptPlane = &green->info;
  blueImage.ptPlane = &blue->info;
  image.ptRed = &redImage;
  image.ptGreen = &greenImage;
  image.ptBlue = &blueImage;
}

void HostImage::SetAoi(int32_t left, int32_t top, int32_t right, int32_t bottom) {
  image.yAoi = 1;
  image.iAoiLeft = left;
  image.iAoiTop = top;
  image.iAoiRight = right;
  image.iAoiBottom = bottom;
}

LiveImage::LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour)
    : HostImage(cameraId, width, height, colour) {
  // A stride wider than the image, so that a display row that runs over
  // shows up in the spare pixels; as tall as the planes' memory, since the
  // display starts at their first row.
  live.iStride = width + 3;
  livePixels.assign(static_cast<size_t>(live.iStride) * (grey->info.iFirstRow + height),
                    kDisplayFill);
  live.plPixels = livePixels.data();
  image.ptLiveBuffer = &live;
  display.qwLiveDisplayTag = kDisplayTag;
  view.ptDisplay = &display;
  view.yColourDisplay = colour ? 1 : 0;
  image.qwColourDisplay = colour ? 1 : 0;
  info.ptHostView = &view;
}

uint32_t LiveImage::NewFrameFlag() {
  return std::atomic_ref<uint32_t>(display.yNewLiveFrame).load(std::memory_order_acquire);
}

void LiveImage::ClearNewFrameFlag() {
  std::atomic_ref<uint32_t>(display.yNewLiveFrame).store(0, std::memory_order_relaxed);
}

bool LiveImage::WaitForNewFrame(std::chrono::seconds bound) {
  const auto deadline = std::chrono::steady_clock::now() + bound;
  while (NewFrameFlag() == 0) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

}  // namespace tavro::testing
