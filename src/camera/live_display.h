// Drawing the host image of a live acquisition into the host's 32-bit live
// display buffer, after each delivered frame.
//
// The frame callback reads the host records (acquisition entry, image,
// planes, live buffer, view flags) and hands their values over in a
// LiveDisplaySource; the drawing itself knows no record layout.
#pragma once

#include <cstdint>

namespace tavro::camera {

struct LiveDisplaySource {
  // First byte of the first image row in each plane, as delivery writes
  // them; every plane advances by `pitch`. The size is already cut to every
  // plane that is read (see DestinationOf).
  const uint8_t* grey = nullptr;
  int32_t width = 0;
  int32_t height = 0;
  int32_t pitch = 0;
  int32_t widthMax = 0;  // the camera's maximum image size
  int32_t heightMax = 0;
  // Colour display: wanted by the host's view and the image, and all three
  // colour planes usable.
  bool colour = false;
  const uint8_t *red = nullptr, *green = nullptr, *blue = nullptr;
  uint32_t* display = nullptr;  // the live buffer's 0x00RRGGBB pixels, row 0
  int32_t displayStride = 0;    // in pixels
  int32_t displayFirstRow = 0;  // the display starts at this row of the buffer
};

// Draws the planes' size, cut to the camera's maximum and to the display's
// stride, from row `displayFirstRow` of the display on. Nothing is drawn
// into a display whose stride or first row is not positive or zero: rows
// going upwards are not supported.
void DrawLiveDisplay(const LiveDisplaySource& source);

}  // namespace tavro::camera
