// Drawing the host image of a live acquisition into the host's 32-bit live
// display buffer, after each delivered frame.
//
// The frame callback reads the host records (acquisition entry, image,
// planes, live buffer, view flags) and hands their values over in a
// LiveDisplaySource; the drawing itself knows no record layout.
#pragma once

#include <cstddef>
#include <cstdint>

#include "camera/display_drawing.h"

namespace tavro::camera {

struct LivePlane {
  const uint8_t* bits = nullptr;  // the plane's memory (row 0 of the memory)
  int32_t firstRow = 0;           // row at which the image starts
};

struct LiveDisplaySource {
  LivePlane grey;
  int32_t width = 0;  // primary plane
  int32_t height = 0;
  int32_t pitch = 0;     // primary plane's bytes per row; every plane uses it
  int32_t widthMax = 0;  // the camera's maximum image size
  int32_t heightMax = 0;
  // Colour display: wanted by the host's view and the image, and all three
  // colour planes present.
  bool colour = false;
  LivePlane red, green, blue;
  uint32_t* display = nullptr;  // the live buffer's 0x00RRGGBB pixels
  int32_t displayStride = 0;    // in pixels
};

// What DrawLiveDisplay draws: the display area and the plane rows it shows
// (row 0 of the image in each plane), grey or colour.
struct LiveDisplayPlan {
  DisplayArea area;
  bool colour = false;
  const uint8_t* grey = nullptr;
  const uint8_t* red = nullptr;
  const uint8_t* green = nullptr;
  const uint8_t* blue = nullptr;
  ptrdiff_t pitch = 0;
};

// The primary plane's size, cut to the camera's maximum, starting at the
// primary plane's first row of the display; an empty area when there is
// nothing to draw.
LiveDisplayPlan PlanLiveDisplay(const LiveDisplaySource& source);

void DrawLiveDisplay(const LiveDisplayPlan& plan);

void DrawLiveDisplay(const LiveDisplaySource& source);

}  // namespace tavro::camera
