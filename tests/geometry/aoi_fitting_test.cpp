// Fitting requested rectangles to a camera's AOI rules, and the limits text.
#include <gtest/gtest.h>

#include <array>
#include <climits>

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
  AoiLimits unitSteps = ColourCameraLimits();
  unitSteps.leftIncrement = unitSteps.topIncrement = 0;
  unitSteps.widthIncrement = unitSteps.heightIncrement = 0;
  struct Case {
    const char* what;
    AoiRect requested;
    AoiRect expected;
    AoiLimits limits = ColourCameraLimits();
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
      {"zero increments count as one", {13, 7, 113, 20}, {13, 7, 113, 20}, unitSteps},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(FitAoi(c.requested, c.limits, 1936, 1216), c.expected);
  }
}

TEST(AoiLimitsText, ReportAndGeometryBlockFollowTheHostFormat) {
  testing::internal::CaptureStdout();
  PrintAoiLimits(ColourCameraLimits());
  PrintAoiLimits(std::nullopt);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "The following represents the AOI parameters as a string: \n"
            "--------------------------------------------------------\n"
            "minXY:0,0::maxXY:1920,1200::incXY:8,2::minWH:16,2::maxWH:1936,1216::incWH:8,2\n"
            "---\t-----------------------------------------------------\n");

  // The host's geometry block takes the values in this order.
  EXPECT_EQ(ColourCameraLimits().Values(),
            (std::array<int32_t, 12>{0, 0, 1920, 1200, 8, 2, 16, 2, 1936, 1216, 8, 2}));

  AoiLimits negative;
  negative.minLeft = -4;
  negative.heightIncrement = -1;
  EXPECT_EQ(AoiLimitsText(negative),
            "minXY:-4,0::maxXY:0,0::incXY:0,0::minWH:0,0::maxWH:0,0::incWH:0,-1");
}

}  // namespace
}  // namespace tavro::geometry
