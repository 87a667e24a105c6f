#include "camera/pixel_conversion.h"

#include <algorithm>
#include <cstring>

namespace tavro::camera {
namespace {

struct PlaneRow {
  uint8_t* grey;
  uint8_t* red;
  uint8_t* green;
  uint8_t* blue;
};

using RowKernel = void (*)(const uint8_t* source, const PlaneRow& row, size_t pixels);

void MonoToGrey(const uint8_t* source, const PlaneRow& row, size_t pixels) {
  std::memcpy(row.grey, source, pixels);
}

void MonoToAllPlanes(const uint8_t* source, const PlaneRow& row, size_t pixels) {
  std::memcpy(row.grey, source, pixels);
  std::memcpy(row.red, source, pixels);
  std::memcpy(row.green, source, pixels);
  std::memcpy(row.blue, source, pixels);
}

// The planes never alias the frame or each other; saying so lets the
// compiler keep the loops tight.
void BgrToGrey(const uint8_t* __restrict source, const PlaneRow& row, size_t pixels) {
  uint8_t* __restrict grey = row.grey;
  for (size_t x = 0; x < pixels; ++x) {
    const uint8_t* pixel = source + 3 * x;
    grey[x] = GreyFromRgb(pixel[2], pixel[1], pixel[0]);
  }
}

void BgrToAllPlanes(const uint8_t* __restrict source, const PlaneRow& row, size_t pixels) {
  uint8_t* __restrict grey = row.grey;
  uint8_t* __restrict red = row.red;
  uint8_t* __restrict green = row.green;
  uint8_t* __restrict blue = row.blue;
  for (size_t x = 0; x < pixels; ++x) {
    const uint8_t* pixel = source + 3 * x;
    blue[x] = pixel[0];
    green[x] = pixel[1];
    red[x] = pixel[2];
    grey[x] = GreyFromRgb(pixel[2], pixel[1], pixel[0]);
  }
}

// Indexed by [source is BGR][destination has colour planes].
constexpr RowKernel kKernels[2][2] = {{MonoToGrey, MonoToAllPlanes}, {BgrToGrey, BgrToAllPlanes}};

size_t BytesPerPixel(const SourceFrame& frame) {
  return frame.bgr ? 3 : 1;
}

}  // namespace

CopyRegion DeliveryRegion(const SourceFrame& frame, const HostPlanes& planes,
                          int32_t copyLimitWidth, int32_t copyLimitHeight) {
  CopyRegion region;
  region.columns = std::min({planes.width, copyLimitWidth, frame.width});
  region.rows = std::min({planes.height, copyLimitHeight, frame.height});
  if (region.columns <= 0 || region.rows <= 0 || frame.base == nullptr) return CopyRegion{};

  // A buffer shorter than width x height (a partial frame) bounds the rows
  // too; the last row read must end inside it.
  const size_t sourceStride = static_cast<size_t>(frame.width) * BytesPerPixel(frame);
  const size_t lastRowBytes = static_cast<size_t>(region.columns) * BytesPerPixel(frame);
  if (frame.size < lastRowBytes) return CopyRegion{};
  const size_t rowsInBuffer = (frame.size - lastRowBytes) / sourceStride + 1;
  if (rowsInBuffer < static_cast<size_t>(region.rows)) {
    region.rows = static_cast<int32_t>(rowsInBuffer);
  }
  return region;
}

void ConvertFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region) {
  if (planes.grey == nullptr || region.columns <= 0 || region.rows <= 0) return;
  const bool colour = planes.colour && planes.red && planes.green && planes.blue;
  const RowKernel kernel = kKernels[frame.bgr ? 1 : 0][colour ? 1 : 0];

  const ptrdiff_t sourceStride =
      static_cast<ptrdiff_t>(frame.width) * static_cast<ptrdiff_t>(BytesPerPixel(frame));
  const ptrdiff_t pitch = planes.pitch;
  for (int32_t y = 0; y < region.rows; ++y) {
    const ptrdiff_t offset = pitch * y;
    const PlaneRow row{planes.grey + offset, colour ? planes.red + offset : nullptr,
                       colour ? planes.green + offset : nullptr,
                       colour ? planes.blue + offset : nullptr};
    kernel(frame.base + sourceStride * y, row, static_cast<size_t>(region.columns));
  }
}

}  // namespace tavro::camera
