// Conversion of a camera frame ("Mono8" or "BGR8", rows packed without gaps)
// into the host's 8-bit planes: one grey plane, optionally red, green and
// blue planes beside it. Works on plain memory; the camera object supplies
// the pointers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tavro::camera {

// ITU-R BT.601 luma in 16-bit fixed point, truncated.
inline uint8_t GreyFromRgb(uint32_t red, uint32_t green, uint32_t blue) {
  return static_cast<uint8_t>((19595u * red + 38470u * green + 7471u * blue) >> 16);
}

struct SourceFrame {
  const uint8_t* base = nullptr;
  size_t size = 0;  // bytes the buffer holds
  int32_t width = 0;
  int32_t height = 0;
  bool bgr = false;  // 3 bytes per pixel (blue, green, red), else 1
};

// First byte of the first row to fill in each plane; every plane advances by
// the primary plane's pitch. The colour pointers are used only when `colour`.
struct HostPlanes {
  uint8_t* grey = nullptr;
  uint8_t* red = nullptr;
  uint8_t* green = nullptr;
  uint8_t* blue = nullptr;
  int32_t width = 0;
  int32_t height = 0;
  int32_t pitch = 0;
  bool colour = false;
};

struct CopyRegion {
  int32_t columns = 0;
  int32_t rows = 0;
};

// The pixels to write: the host plane's size, cut to the camera's maximum
// image size (copy limit) and to what the delivered buffer really holds, so
// that no read passes the buffer and no write passes the plane.
CopyRegion DeliveryRegion(const SourceFrame& frame, const HostPlanes& planes,
                          int32_t copyLimitWidth, int32_t copyLimitHeight);

// A live display drawn in the same pass as the delivery, so that the frame
// is read once: display row y shows plane row y, from the colour bytes when
// `colour`, else from grey, for the top-left `columns` x `rows` of the
// region. The caller makes sure that this is what drawing the planes
// afterwards would give (the display shares no memory with frame or planes).
struct FusedDisplay {
  uint32_t* pixels = nullptr;
  ptrdiff_t stride = 0;  // in pixels
  int32_t columns = 0;
  int32_t rows = 0;
  bool colour = false;
};

// Writes the region row by row: a block copy per row and plane where the
// formats match, fixed-point grey where the source is colour.
void ConvertFrame(const SourceFrame& frame, const HostPlanes& planes, CopyRegion region,
                  const FusedDisplay& display = {});

}  // namespace tavro::camera
