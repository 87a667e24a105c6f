// Drawing planes into the 32-bit live display, alone and in the pass that
// delivers a live frame.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "camera/display_drawing.h"
#include "camera/live_delivery.h"
#include "camera/live_display.h"
#include "camera/pixel_kernels.h"

namespace tavro::camera {
namespace {

constexpr uint32_t kUntouched = 0xDEADBEEF;

// 0x00RRGGBB, written out here so that a swapped channel in the code shows.
uint32_t Packed(uint32_t red, uint32_t green, uint32_t blue) {
  return red << 16 | green << 8 | blue;
}

TEST(GreyDisplay, RepeatsTheGreyByteInRedGreenAndBlue) {
  const uint8_t grey[2][3] = {{0x80, 0x00, 0xFF}, {0x01, 0x7F, 0x80}};
  std::vector<uint32_t> display(2 * 5, kUntouched);  // stride 5, 3 columns drawn
  DrawGrey(&grey[0][0], 3, DisplayArea{display.data(), 5, 3, 2});
  const uint32_t expected[2][5] = {{0x00808080, 0x00000000, 0x00FFFFFF, kUntouched, kUntouched},
                                   {0x00010101, 0x007F7F7F, 0x00808080, kUntouched, kUntouched}};
  for (int y = 0; y < 2; ++y)
    for (int x = 0; x < 5; ++x) EXPECT_EQ(display[y * 5 + x], expected[y][x]) << x << "," << y;
}

TEST(DisplayKernels, EveryInstructionSetDrawsTheDefinedPixelsUpToTheRowEnd) {
  // Rows up to past two of the widest vectors and one with every grey
  // value, at every alignment of the planes; the pixel after the row stays.
  std::vector<uint8_t> red(300 + 3), green(red.size()), blue(red.size());
  for (size_t i = 0; i < red.size(); ++i) {
    red[i] = static_cast<uint8_t>(i * 7 + 1);
    green[i] = static_cast<uint8_t>(i * 13 + 128);
    blue[i] = static_cast<uint8_t>(255 - i * 5);
  }
  std::vector<size_t> lengths(160);
  for (size_t i = 0; i < lengths.size(); ++i) lengths[i] = i + 1;
  lengths.push_back(300);
  for (const PixelKernels& kernels : RunnableKernels()) {
    for (const size_t pixels : lengths) {
      for (size_t offset = 0; offset < 4; ++offset) {
        const uint8_t *r = red.data() + offset, *g = green.data() + offset,
                      *b = blue.data() + offset;
        std::vector<uint32_t> grey(pixels + 1, kUntouched), colour(grey);
        kernels.greyDisplayRow(r, grey.data(), pixels);
        kernels.colourDisplayRow(r, g, b, colour.data(), pixels);
        for (size_t x = 0; x < pixels; ++x) {
          ASSERT_EQ(grey[x], Packed(r[x], r[x], r[x]))
              << kernels.target << ", " << pixels << " pixels at offset " << offset << ", x " << x;
          ASSERT_EQ(colour[x], Packed(r[x], g[x], b[x]))
              << kernels.target << ", " << pixels << " pixels at offset " << offset << ", x " << x;
        }
        EXPECT_EQ(grey[pixels], kUntouched) << kernels.target << ", " << pixels;
        EXPECT_EQ(colour[pixels], kUntouched) << kernels.target << ", " << pixels;
      }
    }
  }
}

TEST(PlaneDisplay, FollowsPitchAndStrideRowByRow) {
  // Source pitch and display stride larger than the row, for rows on and
  // off the vector steps.
  for (const int32_t columns : {1, 17, 64, 71}) {
    SCOPED_TRACE(columns);
    const int32_t rows = 3, pitch = columns + 5, stride = columns + 3;
    std::vector<uint8_t> red(pitch * rows), green(pitch * rows), blue(pitch * rows);
    for (size_t i = 0; i < red.size(); ++i) {
      red[i] = static_cast<uint8_t>(i * 7 + 1);
      green[i] = static_cast<uint8_t>(i * 13 + 128);
      blue[i] = static_cast<uint8_t>(255 - i * 5);
    }
    std::vector<uint32_t> colour(stride * rows, kUntouched), grey(colour);
    const DisplayArea area{colour.data(), stride, columns, rows};
    DrawColour(red.data(), green.data(), blue.data(), pitch, area);
    DrawGrey(green.data(), pitch, DisplayArea{grey.data(), stride, columns, rows});
    for (int32_t y = 0; y < rows; ++y) {
      for (int32_t x = 0; x < stride; ++x) {
        const size_t s = y * pitch + x;
        const bool drawn = x < columns;
        ASSERT_EQ(colour[y * stride + x], drawn ? Packed(red[s], green[s], blue[s]) : kUntouched)
            << x << "," << y;
        ASSERT_EQ(grey[y * stride + x], drawn ? Packed(green[s], green[s], green[s]) : kUntouched)
            << x << "," << y;
      }
    }
  }
}

TEST(ColourDisplay, OverlappingRowsGiveTheSequentialResult) {
  // The blue plane lies inside the display row: drawing pixel x overwrites
  // blue bytes that later pixels read. Only a pixel-by-pixel pass gives the
  // defined result, so the eight-pixel step must not be taken here.
  const int32_t columns = 16;
  std::vector<uint32_t> memory(columns + 8);
  std::vector<uint8_t> red(columns), green(columns);
  for (int32_t i = 0; i < columns; ++i) {
    red[i] = static_cast<uint8_t>(i);
    green[i] = static_cast<uint8_t>(100 + i);
  }
  auto* bytes = reinterpret_cast<uint8_t*>(memory.data());
  for (size_t i = 0; i < memory.size() * 4; ++i) bytes[i] = static_cast<uint8_t>(i * 3);
  const uint8_t* blue = bytes + 6;  // starts inside display pixel 1

  std::vector<uint32_t> expectedMemory = memory;
  auto* expectedBytes = reinterpret_cast<uint8_t*>(expectedMemory.data());
  for (int32_t x = 0; x < columns; ++x) {
    expectedMemory[x] = Packed(red[x], green[x], expectedBytes[6 + x]);
  }

  DrawColour(red.data(), green.data(), blue, columns,
             DisplayArea{memory.data(), columns, columns, 1});
  EXPECT_EQ(memory, expectedMemory);
}

TEST(LiveDisplay, DrawsFromTheFirstRowInsideTheStrideAndTheCameraMaximum) {
  // Planes of 6 x 4 at pitch 8, image rows from row 1; the camera's maximum
  // is 4 x 3. The display's stride bounds the columns; a stride that is not
  // positive or a negative first row draws nothing.
  const int32_t pitch = 8, planeRows = 5;
  std::vector<uint8_t> grey(pitch * planeRows), red(grey.size()), green(grey.size()),
      blue(grey.size());
  for (size_t i = 0; i < grey.size(); ++i) {
    grey[i] = static_cast<uint8_t>(i);
    red[i] = static_cast<uint8_t>(100 + i);
    green[i] = static_cast<uint8_t>(150 + i);
    blue[i] = static_cast<uint8_t>(200 + i);
  }
  struct Case {
    bool colour;
    int32_t stride;
    int32_t firstRow;
    int32_t columns;  // expected; 0: nothing drawn
  };
  for (const Case& c :
       {Case{false, 7, 1, 4}, Case{true, 7, 1, 4}, Case{true, 3, 1, 3}, Case{false, 2, 0, 2},
        Case{false, 0, 1, 0}, Case{true, -7, 1, 0}, Case{false, 7, -1, 0}}) {
    SCOPED_TRACE(testing::Message()
                 << "colour " << c.colour << " stride " << c.stride << " first row " << c.firstRow);
    std::vector<uint32_t> display(7 * 6, kUntouched);
    const size_t start = pitch;  // image row 0 is plane row 1
    DrawLiveDisplay({.grey = grey.data() + start,
                     .width = 6,
                     .height = 4,
                     .pitch = pitch,
                     .widthMax = 4,
                     .heightMax = 3,
                     .colour = c.colour,
                     .red = red.data() + start,
                     .green = green.data() + start,
                     .blue = blue.data() + start,
                     .display = display.data(),
                     .displayStride = c.stride,
                     .displayFirstRow = c.firstRow});

    std::vector<uint32_t> expected(display.size(), kUntouched);
    for (int32_t row = 0; c.columns > 0 && row < 3; ++row) {
      for (int32_t x = 0; x < c.columns; ++x) {
        const size_t at = start + row * pitch + x;
        expected[(c.firstRow + row) * c.stride + x] =
            c.colour ? Packed(red[at], green[at], blue[at]) : Packed(grey[at], grey[at], grey[at]);
      }
    }
    EXPECT_EQ(display, expected);
  }
}

TEST(LiveDelivery, DrawingInTheDeliveryPassGivesWhatDrawingAfterwardsGives) {
  // One arena per run holds the frame, four planes (first row 1) and the
  // display; a run delivering and then drawing and a run doing both in one
  // pass must leave every byte of it the same.
  struct Case {
    const char* what;
    bool bgr;
    int32_t frameWidth, frameHeight, planeWidth, planeHeight, widthMax, heightMax;
    bool colourPlanes, colourDisplay;
    int32_t colourFirstRow;  // the row of the colour planes the display starts at
    bool displayInBluePlane;
    bool fused;    // whether any of it can be drawn in the delivery pass
    bool gapFree;  // plane pitch and display stride equal to the frame's width
  };
  const Case cases[] = {
      {"gap-free rows, colour", true, 100, 6, 100, 6, 100, 6, true, true, 1, false, true, true},
      {"gap-free rows, Mono8", false, 100, 6, 100, 6, 100, 6, false, false, 1, false, true, true},
      {"BGR8, colour planes and display", true, 100, 6, 100, 6, 100, 6, true, true, 1, false, true,
       false},
      {"BGR8, colour planes, grey display", true, 100, 6, 100, 6, 100, 6, true, false, 1, false,
       true, false},
      {"BGR8 into grey, grey display", true, 100, 6, 100, 6, 100, 6, false, false, 1, false, true,
       false},
      {"Mono8 into colour planes and display", false, 100, 6, 100, 6, 100, 6, true, true, 1, false,
       true, false},
      {"frame smaller than the planes", true, 70, 4, 100, 6, 100, 6, true, true, 1, false, true,
       false},
      {"camera maximum smaller than the frame", true, 100, 6, 100, 6, 67, 5, true, true, 1, false,
       true, false},
      {"colour display from rows the delivery did not write", true, 100, 6, 100, 6, 100, 6, true,
       true, 2, false, false, false},
      {"colour display without colour planes delivered", true, 100, 6, 100, 6, 100, 6, false, true,
       1, false, false, false},
      {"display inside a plane", true, 100, 6, 100, 6, 100, 6, true, true, 1, true, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const int32_t pitch = c.planeWidth + (c.gapFree ? 0 : 3), planeRows = c.planeHeight + 2;
    const int32_t stride = c.planeWidth + (c.gapFree ? 0 : 2);
    const size_t frameBytes = size_t(c.frameWidth) * c.frameHeight * (c.bgr ? 3 : 1);
    const size_t planeBytes = size_t(pitch) * planeRows, displayBytes = 4u * stride * planeRows;
    const size_t arenaBytes = frameBytes + 4 * planeBytes + displayBytes + 64;

    struct Run {
      std::vector<uint32_t> words;  // 4-byte aligned for the display
      SourceFrame frame;
      HostPlanes planes;
      LiveDisplaySource source;
    };
    const auto layOut = [&](Run& run) {
      run.words.resize(arenaBytes / 4 + 1);
      auto* arena = reinterpret_cast<uint8_t*>(run.words.data());
      for (size_t i = 0; i < arenaBytes; ++i) arena[i] = static_cast<uint8_t>(i * 37 + 11);
      uint8_t* plane[4];
      for (int k = 0; k < 4; ++k) plane[k] = arena + frameBytes + k * planeBytes;
      auto* display = reinterpret_cast<uint32_t*>(
          c.displayInBluePlane ? plane[3] + 8 : arena + (frameBytes + 4 * planeBytes + 3) / 4 * 4);
      run.frame = {arena, frameBytes, c.frameWidth, c.frameHeight, c.bgr};
      run.planes = {plane[0] + pitch,
                    plane[1] + pitch,
                    plane[2] + pitch,
                    plane[3] + pitch,
                    c.planeWidth,
                    c.planeHeight,
                    pitch,
                    c.colourPlanes};
      const ptrdiff_t colourRow = ptrdiff_t{c.colourFirstRow} * pitch;
      run.source = {.grey = plane[0] + pitch,
                    .width = c.planeWidth,
                    .height = c.planeHeight,
                    .pitch = pitch,
                    .widthMax = c.widthMax,
                    .heightMax = c.heightMax,
                    .colour = c.colourDisplay,
                    .red = plane[1] + colourRow,
                    .green = plane[2] + colourRow,
                    .blue = plane[3] + colourRow,
                    .display = display,
                    .displayStride = stride,
                    .displayFirstRow = 1};
    };
    Run after, together;
    layOut(after);
    layOut(together);
    const CopyRegion region = DeliveryRegion(after.frame, after.planes, c.widthMax, c.heightMax);
    ConvertFrame(after.frame, after.planes, region);
    DrawLiveDisplay(after.source);
    const LiveDisplayPlan plan = PlanLiveDisplay(together.source);
    EXPECT_EQ(FusableDisplay(together.frame, together.planes, region, plan).pixels != nullptr,
              c.fused);
    DeliverLiveFrame(together.frame, together.planes, region, plan);
    EXPECT_TRUE(after.words == together.words);
  }
}
}  // namespace
}  // namespace tavro::camera
