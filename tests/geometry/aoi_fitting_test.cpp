// Fitting requested rectangles to a camera's AOI rules, and the limits text.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>

#include "geometry/aoi.h"

namespace tavro::geometry {
namespace {

// The bundled colour camera's rules: offsets in steps of 8 and 2, sizes in
// steps of 8 and 2, minimum size 16 x 2.
AoiLimits ColourCameraLimits() {
  AoiLimits limits;
  limits.minLeft = 0;
  limits.minTop = 0;
  limits.maxLeft = 1920;
  limits.maxTop = 1200;
  limits.leftIncrement = 8;
  limits.topIncrement = 2;
  limits.minWidth = 16;
  limits.minHeight = 2;
  limits.maxWidth = 1936;
  limits.maxHeight = 1216;
  limits.widthIncrement = 8;
  limits.heightIncrement = 2;
  return limits;
}

TEST(AoiFitting, RoundsClampsAndCutsAtTheSensorEdge) {
  struct Case {
    const char* what;
    AoiRect requested;
    AoiRect expected;
  };
  const Case cases[] = {
      {"left 13 rounds down to 8, width 100 to 96", {13, 0, 113, 10}, {8, 0, 104, 10}},
      {"odd top and height round down to even", {0, 5, 64, 12}, {0, 4, 64, 10}},
      {"width below the minimum is raised", {0, 0, 3, 2}, {0, 0, 16, 2}},
      {"rectangle past the sensor is cut at its edge",
       {1900, 1200, 2100, 1300},
       {1896, 1200, 1936, 1216}},
      {"offset above its maximum is lowered", {4000, 3000, 4100, 3100}, {1920, 1200, 1936, 1216}},
      {"negative offsets are raised to the minimum", {-13, -3, 27, 7}, {0, 0, 40, 10}},
      {"inverted rectangle gets the minimum size", {100, 100, 50, 50}, {96, 100, 112, 102}},
      {"full sensor stays the full sensor", {0, 0, 1936, 1216}, {0, 0, 1936, 1216}},
      {"extreme values do not overflow",
       {INT32_MIN, INT32_MIN, INT32_MAX, INT32_MAX},
       {0, 0, 1936, 1216}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(FitAoi(c.requested, ColourCameraLimits(), 1936, 1216), c.expected);
  }
}

TEST(AoiFitting, ZeroIncrementsCountAsOne) {
  AoiLimits limits = ColourCameraLimits();
  limits.leftIncrement = 0;
  limits.topIncrement = 0;
  limits.widthIncrement = 0;
  limits.heightIncrement = 0;
  EXPECT_EQ(FitAoi({13, 7, 113, 20}, limits, 1936, 1216), (AoiRect{13, 7, 113, 20}));
}

TEST(AoiLimitsText, MatchesTheHostFormat) {
  EXPECT_EQ(AoiLimitsText(ColourCameraLimits()),
            "minXY:0,0::maxXY:1920,1200::incXY:8,2::minWH:16,2::maxWH:1936,1216::incWH:8,2");

  AoiLimits negative;
  negative.minLeft = -4;
  negative.heightIncrement = -1;
  EXPECT_EQ(AoiLimitsText(negative),
            "minXY:-4,0::maxXY:0,0::incXY:0,0::minWH:0,0::maxWH:0,0::incWH:0,-1");
}

TEST(AoiLimitsText, ValuesFollowTheGeometryBlockOrder) {
  // The host's geometry block is a copy of the record as it lies in memory.
  const AoiLimits limits = ColourCameraLimits();
  const auto values = limits.Values();
  int32_t raw[12];
  static_assert(sizeof(raw) == sizeof(AoiLimits));
  std::memcpy(raw, &limits, sizeof(raw));
  const int32_t expected[12] = {0, 0, 1920, 1200, 8, 2, 16, 2, 1936, 1216, 8, 2};
  for (int k = 0; k < 12; ++k) {
    EXPECT_EQ(values[k], expected[k]) << "position " << k;
    EXPECT_EQ(raw[k], expected[k]) << "position " << k;
  }
}

TEST(AoiLimitsReport, PrintsTheFourLinesOrNothing) {
  testing::internal::CaptureStdout();
  PrintAoiLimits(ColourCameraLimits());
  PrintAoiLimits(std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "The following represents the AOI parameters as a string: \n"
            "--------------------------------------------------------\n"
            "minXY:0,0::maxXY:1920,1200::incXY:8,2::minWH:16,2::maxWH:1936,1216::incWH:8,2\n"
            "---\t-----------------------------------------------------\n");
}

}  // namespace
}  // namespace tavro::geometry
