// Frames into host planes: grey conversion values, the row kernels of every
// instruction set against the pixel definition, and the bounds of what is
// read and written. Whole frames and the planes around the image are checked
// end to end by the acquisition tests.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "camera/display_drawing.h"
#include "camera/pixel_conversion.h"
#include "camera/pixel_kernels.h"

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

// Every instruction set this processor runs is checked, not only the one
// delivery picks, so that a fault in a narrower set shows on a wide machine.
// The outputs of one row, filled with a guard value before each run.
struct Outputs {
  static constexpr uint8_t kGuard = 0xA5;
  static constexpr uint32_t kDisplayGuard = 0xDEADBEEF;
  // `offset` shifts every buffer off its allocation's alignment.
  Outputs(size_t pixels, size_t offset)
      : grey(pixels + offset + 1, kGuard),
        red(grey),
        green(grey),
        blue(grey),
        display(pixels + offset + 1, kDisplayGuard),
        offset(offset) {}
  RowOutput Row(bool colour, bool withDisplay, bool colourDisplay) {
    RowOutput row;
    row.grey = grey.data() + offset;
    if (colour) {
      row.red = red.data() + offset;
      row.green = green.data() + offset;
      row.blue = blue.data() + offset;
    }
    if (withDisplay) row.display = display.data() + offset;
    row.colourDisplay = colourDisplay;
    return row;
  }
  std::vector<uint8_t> grey, red, green, blue;
  std::vector<uint32_t> display;
  size_t offset;
};

// The first pixel where a row's outputs differ from the pixel definition,
// or where a byte outside the row changed; -1 when there is none.
ptrdiff_t FirstWrongPixel(const uint8_t* bgr, bool bgrSource, size_t pixels, const Outputs& out,
                          bool colour, bool withDisplay, bool colourDisplay) {
  const auto guarded = [&](size_t i) {
    return out.grey[i] == Outputs::kGuard && out.red[i] == Outputs::kGuard &&
           out.green[i] == Outputs::kGuard && out.blue[i] == Outputs::kGuard &&
           out.display[i] == Outputs::kDisplayGuard;
  };
  for (size_t i = 0; i < out.offset; ++i) {
    if (!guarded(i)) return -1 - static_cast<ptrdiff_t>(out.offset - i);  // before the row
  }
  for (size_t x = 0; x < pixels; ++x) {
    const size_t i = out.offset + x;
    uint8_t r = bgr[x], g = r, b = r;
    if (bgrSource) b = bgr[3 * x], g = bgr[3 * x + 1], r = bgr[3 * x + 2];
    const uint8_t grey = bgrSource ? GreyFromRgb(r, g, b) : r;
    bool right = out.grey[i] == grey;
    if (colour) {
      right = right && out.red[i] == r && out.green[i] == g && out.blue[i] == b;
    } else {
      right = right && out.red[i] == Outputs::kGuard && out.green[i] == Outputs::kGuard &&
              out.blue[i] == Outputs::kGuard;
    }
    const uint32_t shown = !withDisplay    ? Outputs::kDisplayGuard
                           : colourDisplay ? DisplayPixel(r, g, b)
                                           : DisplayPixel(grey, grey, grey);
    if (!right || out.display[i] != shown) return static_cast<ptrdiff_t>(x);
  }
  return guarded(out.offset + pixels) ? -1 : static_cast<ptrdiff_t>(pixels);
}

TEST(PixelKernels, EveryColourGivesTheDefinedGreyPlanesAndDisplayOnEveryInstructionSet) {
  // All 2^24 colours, as 4096 rows of 4096 pixels, with colour planes and
  // the colour display written in the same pass; grey alone, with and
  // without the grey display, takes every 7th row.
  constexpr size_t kRow = 4096;
  std::vector<uint8_t> bgr(kRow * 3);
  for (const PixelKernels& kernels : RunnableKernels()) {
    SCOPED_TRACE(kernels.target);
    Outputs all(kRow, 0);
    size_t wrongRows = 0;
    for (uint32_t high = 0; high < kRow; ++high) {
      for (uint32_t x = 0; x < kRow; ++x) {
        const uint32_t colour = high << 12 | x;
        bgr[3 * x] = static_cast<uint8_t>(colour);
        bgr[3 * x + 1] = static_cast<uint8_t>(colour >> 8);
        bgr[3 * x + 2] = static_cast<uint8_t>(colour >> 16);
      }
      kernels.bgrRow(bgr.data(), all.Row(true, true, true), kRow);
      wrongRows += FirstWrongPixel(bgr.data(), true, kRow, all, true, true, true) != -1;
      if (high % 7 != 0) continue;
      const bool withDisplay = high % 2 == 0;
      Outputs greyOnly(kRow, 0);
      kernels.bgrRow(bgr.data(), greyOnly.Row(false, withDisplay, false), kRow);
      wrongRows +=
          FirstWrongPixel(bgr.data(), true, kRow, greyOnly, false, withDisplay, false) != -1;
    }
    EXPECT_EQ(wrongRows, 0u);
  }
}

TEST(PixelKernels, RowEndsAndUnalignedRowsWriteExactlyTheirPixels) {
  // Lengths up to past two of the widest vectors, at every alignment of a
  // 4-byte word, for both sources and every output combination.
  std::vector<uint8_t> source(3 * 160 + 8);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<uint8_t>(i * 151 + 7);
  for (const PixelKernels& kernels : RunnableKernels()) {
    for (const bool bgrSource : {true, false}) {
      for (size_t pixels = 1; pixels <= 160; ++pixels) {
        for (size_t offset = 0; offset < 4; ++offset) {
          for (int outputs = 0; outputs < 6; ++outputs) {
            const bool colour = outputs % 2 == 1, withDisplay = outputs >= 2,
                       colourDisplay = outputs >= 4;
            const uint8_t* row = source.data() + offset;
            Outputs out(pixels, 3 - offset);
            const auto kernel = bgrSource ? kernels.bgrRow : kernels.monoRow;
            kernel(row, out.Row(colour, withDisplay, colourDisplay), pixels);
            ASSERT_EQ(
                FirstWrongPixel(row, bgrSource, pixels, out, colour, withDisplay, colourDisplay),
                -1)
                << kernels.target << (bgrSource ? " BGR8" : " Mono8") << ", " << pixels
                << " pixels at offset " << offset << ", outputs " << outputs;
          }
        }
      }
    }
  }
}

TEST(FrameConversion, PlanesHoldTheRegionWhetherRowsAreGapFreeOrNot) {
  // Rows without gaps on both sides are converted as one long row; a pitch
  // or a frame wider than the region keeps them apart. Either way each
  // plane pixel in the region follows the definition and the rest stays.
  struct Case {
    const char* what;
    bool bgr;
    int32_t frameWidth, planeWidth, pitch;
  };
  const Case cases[] = {{"BGR8, gap-free", true, 37, 37, 37},
                        {"Mono8, gap-free", false, 70, 70, 70},
                        {"BGR8, pitch wider", true, 37, 37, 40},
                        {"Mono8, frame wider than the plane", false, 70, 64, 64}};
  constexpr int32_t kRows = 5;
  constexpr uint8_t kFill = 0xA5;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const int32_t bytesPerPixel = c.bgr ? 3 : 1;
    std::vector<uint8_t> data(size_t(c.frameWidth) * kRows * bytesPerPixel);
    for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 151 + 7);
    std::vector<uint8_t> grey(size_t(c.pitch) * (kRows + 1), kFill), red(grey), green(grey),
        blue(grey);
    const SourceFrame frame{data.data(), data.size(), c.frameWidth, kRows, c.bgr};
    const HostPlanes planes{grey.data(),  red.data(), green.data(), blue.data(),
                            c.planeWidth, kRows,      c.pitch,      true};
    ConvertFrame(frame, planes, DeliveryRegion(frame, planes, c.frameWidth, kRows));
    for (size_t i = 0; i < grey.size(); ++i) {
      const size_t x = i % c.pitch, y = i / c.pitch;
      uint8_t r = kFill, g = kFill, b = kFill, luma = kFill;
      if (x < size_t(c.planeWidth) && y < kRows) {
        const uint8_t* pixel = &data[(y * c.frameWidth + x) * bytesPerPixel];
        r = g = b = luma = pixel[0];
        if (c.bgr) b = pixel[0], g = pixel[1], r = pixel[2], luma = GreyFromRgb(r, g, b);
      }
      ASSERT_EQ(grey[i], luma) << x << "," << y;
      ASSERT_EQ(red[i], r) << x << "," << y;
      ASSERT_EQ(green[i], g) << x << "," << y;
      ASSERT_EQ(blue[i], b) << x << "," << y;
    }
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
