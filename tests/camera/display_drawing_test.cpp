// Drawing planes into the 32-bit live display.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "camera/display_drawing.h"
#include "camera/live_display.h"

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

  // Every grey value, in rows of lengths around the sixteen-pixel step.
  std::vector<uint8_t> values(256 + 40);
  for (size_t i = 0; i < values.size(); ++i) values[i] = static_cast<uint8_t>(i * 7);
  for (const int32_t columns : {256, 1, 15, 16, 17, 31, 33, 40}) {
    std::vector<uint32_t> row(columns + 1, kUntouched);
    DrawGrey(values.data(), 0, DisplayArea{row.data(), 0, columns, 1});
    for (int32_t x = 0; x < columns; ++x) {
      ASSERT_EQ(row[x], GreyDisplayTable()[values[x]]) << "length " << columns << " at " << x;
    }
    EXPECT_EQ(row[columns], kUntouched) << "length " << columns;
  }
}

TEST(ColourDisplay, EqualsThePixelByPixelDefinitionForEveryRowLength) {
  // Lengths around the eight-pixel step, with source pitch larger than the
  // row and a display stride larger than the row.
  for (int32_t columns = 1; columns <= 27; ++columns) {
    SCOPED_TRACE(columns);
    const int32_t rows = 3, pitch = columns + 5, stride = columns + 3;
    std::vector<uint8_t> red(pitch * rows), green(pitch * rows), blue(pitch * rows);
    for (size_t i = 0; i < red.size(); ++i) {
      red[i] = static_cast<uint8_t>(i * 7 + 1);
      green[i] = static_cast<uint8_t>(i * 13 + 128);
      blue[i] = static_cast<uint8_t>(255 - i * 5);
    }
    std::vector<uint32_t> display(stride * rows, kUntouched);
    DrawColour(red.data(), green.data(), blue.data(), pitch,
               DisplayArea{display.data(), stride, columns, rows});
    for (int32_t y = 0; y < rows; ++y) {
      for (int32_t x = 0; x < stride; ++x) {
        const size_t s = y * pitch + x;
        const uint32_t expected = x < columns ? Packed(red[s], green[s], blue[s]) : kUntouched;
        ASSERT_EQ(display[y * stride + x], expected) << x << "," << y;
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

}  // namespace
}  // namespace tavro::camera
