#include "camera/pixel_conversion.h"

#include <algorithm>

#include "camera/pixel_kernels.h"

namespace tavro::camera {
namespace {

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

void ConvertFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                  const FusedDisplay& display) {
  if (planes.grey == nullptr || region.columns <= 0 || region.rows <= 0) return;
  const bool colour = planes.colour && planes.red && planes.green && planes.blue;
  const PixelKernels& kernels = Kernels();
  const auto kernel = frame.bgr ? kernels.bgrRow : kernels.monoRow;
  size_t columns = static_cast<size_t>(region.columns);
  size_t shown = display.pixels != nullptr
                     ? static_cast<size_t>(std::clamp(display.columns, 0, region.columns))
                     : 0;
  int32_t rows = region.rows;

  const ptrdiff_t sourceStride =
      static_cast<ptrdiff_t>(frame.width) * static_cast<ptrdiff_t>(BytesPerPixel(frame));
  const ptrdiff_t pitch = planes.pitch;
  // Rows that follow each other without a gap in the frame, the planes and
  // the display make one long row: a single block copy for "Mono8", and
  // no row ends for the vector steps.
  const bool displayWhole = display.pixels == nullptr ||
                            (shown == columns && display.rows >= rows && display.stride == pitch);
  if (sourceStride == static_cast<ptrdiff_t>(columns * BytesPerPixel(frame)) &&
      pitch == region.columns && displayWhole) {
    columns *= static_cast<size_t>(rows);
    shown = display.pixels != nullptr ? columns : 0;
    rows = 1;
  }
  for (int32_t y = 0; y < rows; ++y) {
    const ptrdiff_t offset = pitch * y;
    RowOutput row;
    row.grey = planes.grey + offset;
    if (colour) {
      row.red = planes.red + offset;
      row.green = planes.green + offset;
      row.blue = planes.blue + offset;
    }
    const uint8_t* source = frame.base + sourceStride * y;
    const size_t fused = y < display.rows ? shown : 0;
    if (fused > 0) {
      RowOutput withDisplay = row;
      withDisplay.display = display.pixels + display.stride * y;
      withDisplay.colourDisplay = display.colour;
      kernel(source, withDisplay, fused);
    }
    if (fused == columns) continue;
    // The rest of the row, which the display does not show.
    for (uint8_t** plane : {&row.grey, &row.red, &row.green, &row.blue}) {
      if (*plane != nullptr) *plane += fused;
    }
    kernel(source + fused * BytesPerPixel(frame), row, columns - fused);
  }
}

}  // namespace tavro::camera
