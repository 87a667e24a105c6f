// Frames into host planes: grey conversion values, every colour through the
// wide steps, and the bounds of what is read and written. The mono paths and
// the planes around the image are checked end to end by the acquisition tests.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "camera/pixel_conversion.h"

namespace tavro::camera {
namespace {

TEST(GreyConversion, UsesTruncatedFixedPointLuma) {
  struct Case {
    uint8_t red, green, blue, grey;
  };
  const Case cases[] = {{255, 0, 0, 76},      {0, 255, 0, 149}, {0, 0, 255, 29},
                        {255, 255, 255, 255}, {0, 0, 0, 0},     {128, 128, 128, 128},
                        {10, 200, 30, 123}};
  for (const Case& c : cases) {
    EXPECT_EQ(GreyFromRgb(c.red, c.green, c.blue), c.grey)
        << int(c.red) << "," << int(c.green) << "," << int(c.blue);
  }
}

TEST(FrameConversion, ColourFramesMatchThePixelDefinitionForEveryColourAndRowEnd) {
  // Every 24-bit colour once: 4096 x 4096 pixels; rows of other lengths show
  // the ends of the wide steps.
  for (const int32_t w : {4096, 1, 15, 17, 33, 47}) {
    const int32_t h = w == 4096 ? 4096 : 3;
    SCOPED_TRACE(testing::Message() << "width " << w);
    std::vector<uint8_t> data(static_cast<size_t>(w) * h * 3);
    for (size_t i = 0; i < data.size() / 3; ++i) {
      const uint32_t colour = static_cast<uint32_t>(i * (w == 4096 ? 1 : 2654435761u));
      data[3 * i] = static_cast<uint8_t>(colour);
      data[3 * i + 1] = static_cast<uint8_t>(colour >> 8);
      data[3 * i + 2] = static_cast<uint8_t>(colour >> 16);
    }
    std::vector<uint8_t> grey(data.size() / 3), red(grey.size()), green(grey.size()),
        blue(grey.size());
    const SourceFrame frame{data.data(), data.size(), w, h, true};
    const HostPlanes planes{grey.data(), red.data(), green.data(), blue.data(), w, h, w, true};
    ConvertFrame(frame, planes, DeliveryRegion(frame, planes, w, h));
    size_t wrong = 0, first = 0;
    for (size_t i = 0; i < grey.size(); ++i) {
      const uint8_t b = data[3 * i], g = data[3 * i + 1], r = data[3 * i + 2];
      if (grey[i] != GreyFromRgb(r, g, b) || red[i] != r || green[i] != g || blue[i] != b) {
        if (wrong++ == 0) first = i;
      }
    }
    EXPECT_EQ(wrong, 0u) << "first at pixel " << first;
  }
}

TEST(FrameConversion, RegionIsBoundedByPlaneLimitAndBuffer) {
  struct Case {
    const char* what;
    int32_t frameWidth, frameHeight;
    size_t bufferBytes;  // 0: exactly width x height x 3
    int32_t planeWidth, planeHeight, limitWidth, limitHeight;
    CopyRegion expected;
  };
  const Case cases[] = {
      {"host plane smaller than the frame", 64, 32, 0, 20, 10, 64, 32, {20, 10}},
      {"host plane larger than the frame", 16, 8, 0, 100, 50, 100, 50, {16, 8}},
      {"copy limit smaller than both", 64, 32, 0, 64, 32, 30, 12, {30, 12}},
      {"partial buffer holds 5 rows and a bit", 10, 8, 10 * 3 * 5 + 7, 10, 8, 10, 8, {10, 5}},
      {"buffer shorter than one row", 10, 8, 20, 10, 8, 10, 8, {0, 0}},
      {"negative plane size", 10, 8, 0, -4, 8, 10, 8, {0, 0}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::vector<uint8_t> data(
        c.bufferBytes ? c.bufferBytes : static_cast<size_t>(c.frameWidth * c.frameHeight * 3));
    const SourceFrame frame{data.data(), data.size(), c.frameWidth, c.frameHeight, true};
    HostPlanes planes;
    planes.width = c.planeWidth;
    planes.height = c.planeHeight;
    const CopyRegion region = DeliveryRegion(frame, planes, c.limitWidth, c.limitHeight);
    EXPECT_EQ(region.columns, c.expected.columns);
    EXPECT_EQ(region.rows, c.expected.rows);
  }
}

}  // namespace
}  // namespace tavro::camera
