#include "camera/frame_pattern.h"

#include <algorithm>
#include <cstring>

namespace oxelsim {

// ramp_[k * bpp + c] = k + 85 c (mod 256) for k below width + 256: the row
// with phase p is the window starting at pixel p.
void FramePattern::Prepare(uint32_t width, uint32_t bytesPerPixel) {
  if (width == rampWidth_ && bytesPerPixel == rampBytesPerPixel_) return;
  const size_t pixels = static_cast<size_t>(width) + 256;
  ramp_.resize(pixels * bytesPerPixel);
  for (size_t k = 0; k < pixels; ++k) {
    for (uint32_t c = 0; c < bytesPerPixel; ++c) {
      ramp_[k * bytesPerPixel + c] = static_cast<uint8_t>(k + 85u * c);
    }
  }
  rampWidth_ = width;
  rampBytesPerPixel_ = bytesPerPixel;
}

size_t FramePattern::Fill(const FrameGeometry& geometry, uint64_t frameId, uint8_t* destination,
                          size_t capacity) {
  Prepare(geometry.width, geometry.bytesPerPixel);
  const size_t rowBytes = static_cast<size_t>(geometry.width) * geometry.bytesPerPixel;
  size_t written = 0;
  for (uint32_t row = 0; row < geometry.height && written < capacity; ++row) {
    const uint32_t y = geometry.offsetY + row;
    const uint8_t phase =
        static_cast<uint8_t>(geometry.offsetX + 7u * y + static_cast<uint32_t>(frameId));
    const size_t count = std::min(rowBytes, capacity - written);
    std::memcpy(destination + written,
                ramp_.data() + static_cast<size_t>(phase) * geometry.bytesPerPixel, count);
    written += count;
  }
  return written;
}

}  // namespace oxelsim
