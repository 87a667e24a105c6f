// Live acquisition into planes and live buffers of odd but host-described
// shapes, each allocated exactly as large as the host guide says: a frame
// lands inside what the host described and nothing beside it is read or
// written (guards around every allocation, poisoned under the address
// sanitizer).
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>

#include "camera/display_drawing.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int32_t kWidth = 40;
constexpr int32_t kHeight = 24;
constexpr int32_t kFirstRow = 3;

struct Shape {
  const char* what;
  bool colour;           // colour camera, colour planes and colour display
  int32_t width, pitch;  // primary plane
  int32_t colourWidth;   // colour planes (their height is colourHeight)
  int32_t colourHeight;
  int32_t colourPitch;
  int32_t stride;          // live buffer, in pixels
  int32_t columns, rows;   // expected in planes and display
  int32_t displayColumns;  // expected in the display; 0 draws nothing
  bool colourShown;        // the display shows the colour planes
};

// The guide's sizes: a plane holds iPitch x (primary iFirstRow + iHeight)
// bytes; the live buffer iStride x (primary iFirstRow + primary iHeight)
// pixels, or that with the plane's width as stride when the stride is not
// positive.
size_t PlaneBytes(int32_t pitch, int32_t height) {
  return static_cast<size_t>(pitch) * (kFirstRow + height);
}

class HostGeometry : public PluginHost {};

TEST_F(HostGeometry, LiveStaysInsideExactlySizedPlanesAndLiveBuffer) {
  const Shape shapes[] = {
      {"guide example", false, kWidth, 45, 0, 0, 0, 41, kWidth, kHeight, kWidth, false},
      {"stride below the width", false, kWidth, 45, 0, 0, 0, 30, kWidth, kHeight, 30, false},
      {"stride zero", false, kWidth, 45, 0, 0, 0, 0, kWidth, kHeight, 0, false},
      {"stride negative", false, kWidth, 45, 0, 0, 0, -kWidth, kWidth, kHeight, 0, false},
      {"width above the pitch", false, 60, 40, 0, 0, 0, 60, 40, kHeight, 40, false},
      {"colour planes smaller", true, kWidth, 45, 20, 10, 45, 41, 20, 10, 20, true},
      {"colour pitch below the primary", true, kWidth, 45, kWidth, kHeight, 44, 41, kWidth, kHeight,
       kWidth, false},
  };
  for (const Shape& s : shapes) {
    SCOPED_TRACE(s.what);
    const SimCamera camera = s.colour ? kColour : kMono;
    const int16_t number = SetupOn({camera})[0];
    LiveImage image(number, kWidth, kHeight, s.colour);
    image.SetPlane(0, std::make_unique<HostPlane>(PlaneBytes(s.pitch, kHeight), s.width, kHeight,
                                                  s.pitch, kFirstRow));
    if (s.colour) {
      for (int k = 1; k <= 3; ++k) {
        image.SetPlane(
            k, std::make_unique<HostPlane>(PlaneBytes(s.colourPitch, s.colourHeight), s.colourWidth,
                                           s.colourHeight, s.colourPitch, kFirstRow));
      }
    }
    const int32_t stride = s.stride > 0 ? s.stride : s.width;
    image.SetLiveBuffer(static_cast<size_t>(stride) * (kFirstRow + kHeight), s.stride);

    ASSERT_EQ(Live(image, 1), 0);
    ASSERT_TRUE(image.WaitForNewFrame());
    ASSERT_EQ(Live(image, 0), 0);
    EXPECT_TRUE(image.GuardsIntact());

    // Colour planes that delivery cannot fill stay the host's.
    if (s.colour && !s.colourShown) {
      for (auto* plane : {&image.red, &image.green, &image.blue}) {
        const auto bytes = (*plane)->memory.view();
        EXPECT_TRUE(std::all_of(bytes.begin(), bytes.end(),
                                [](uint8_t b) { return b == HostPlane::kFill; }));
        plane->reset();
      }
    }
    // The planes hold the last frame in the expected region...
    for (auto* plane : {&image.grey, &image.red, &image.green, &image.blue}) {
      if (*plane) (*plane)->info.iWidth = s.columns, (*plane)->info.iHeight = s.rows;
    }
    EXPECT_TRUE(HoldsFrame(image, s.colour, LastFrameId(camera)));

    // ... and the display shows them there, starting at the first row, and
    // nothing anywhere else.
    int mismatches = 0;
    for (size_t i = 0; i < image.livePixels.size(); ++i) {
      const int32_t x = static_cast<int32_t>(i % stride);
      const int32_t y = static_cast<int32_t>(i / stride) - kFirstRow;
      uint32_t expected = LiveImage::kDisplayFill;
      if (x < s.displayColumns && y >= 0 && y < s.rows) {
        expected = s.colourShown ? camera::DisplayPixel(image.red->At(x, y), image.green->At(x, y),
                                                        image.blue->At(x, y))
                                 : camera::GreyDisplayTable()[image.grey->At(x, y)];
      }
      mismatches += image.livePixels[i] != expected;
    }
    EXPECT_EQ(mismatches, 0);
    TearDown();
  }
}

}  // namespace
}  // namespace tavro::testing
