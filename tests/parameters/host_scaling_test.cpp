// Conversions between host values and camera feature values, with the worked
// numbers our users rely on.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>

#include "parameters/host_scaling.h"

namespace tavro::parameters {
namespace {

TEST(GainScale, MapsPercentOntoTheCameraRange) {
  const LinearScale gain{1.0, 15.0, 100};  // camera gain 1.0 .. 16.0
  struct Case {
    int32_t percent;
    double camera;
  };
  const Case toCamera[] = {{50, 8.5}, {150, 16.0}, {-3, 1.0}, {0, 1.0}, {100, 16.0}};
  for (const Case& c : toCamera) EXPECT_DOUBLE_EQ(gain.ToCamera(c.percent), c.camera) << c.percent;

  const Case toHost[] = {{50, 8.5}, {100, 16.0}, {100, 16.2}, {0, 1.0}, {-6, 0.0}, {3, 1.4}};
  for (const Case& c : toHost) EXPECT_EQ(gain.ToHost(c.camera), c.percent) << c.camera;
}

TEST(BlackLevelScale, MapsTheByteScaleOntoTheCameraRange) {
  const LinearScale blackLevel{0.0, 32.0, 255};
  EXPECT_DOUBLE_EQ(blackLevel.ToCamera(255), 32.0);
  EXPECT_NEAR(blackLevel.ToCamera(128), 16.06, 0.005);
  EXPECT_DOUBLE_EQ(blackLevel.ToCamera(300), 32.0);
  EXPECT_EQ(blackLevel.ToHost(16.0), 128);  // 127.5 + 0.5, truncated
  EXPECT_EQ(blackLevel.ToHost(40.0), 255);

  // An unknown range reads as zero and writes the minimum.
  EXPECT_EQ((LinearScale{0.0, 0.0, 100}.ToHost(12.5)), 0);
  EXPECT_DOUBLE_EQ((LinearScale{2.5, 0.0, 255}.ToCamera(255)), 2.5);
}

TEST(ThroughputScale, RoundsToIncrementsAboveTheMinimumAndReadsBack) {
  struct Case {
    const char* what;
    ThroughputScale scale;
    int32_t percent;
    int64_t camera;
  };
  const Case cases[] = {
      {"37 % of 100..500 step 4", {100, 400, 4}, 37, 248},
      {"50 % of range 123 step 10 rounds down to 60", {0, 123, 10}, 50, 60},
      {"120 % is the maximum", {100, 400, 4}, 120, 500},
      {"-5 % is the minimum", {100, 400, 4}, -5, 100},
      {"increment 0 counts as 1", {7, 123, 0}, 50, 7 + 62},
      {"halves round up", {0, 2, 1}, 25, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.scale.ToCamera(c.percent), c.camera);
  }

  // Reading back: the nearest percent, clamped.
  const ThroughputScale scale{100, 400, 4};
  EXPECT_EQ(scale.ToHost(248), 37);
  EXPECT_EQ(scale.ToHost(500), 100);
  EXPECT_EQ(scale.ToHost(100), 0);
  EXPECT_EQ(scale.ToHost(40), 0);
  EXPECT_EQ(scale.ToHost(9000), 100);
  EXPECT_EQ((ThroughputScale{100, 0, 4}.ToHost(300)), 0);
}

TEST(ExposureRange, IsReportedInWholeNumbers) {
  // Clamping a request is checked against the camera's exposure feature.
  // A range of 12.7 to 1000.9, increment 0.5, current 99.5 is reported as
  // minimum 13, maximum 1000, increment 0, current 100.
  EXPECT_EQ(Rounded(12.7), 13);
  EXPECT_EQ(Truncated(1000.9), 1000);
  EXPECT_EQ(Truncated(0.5), 0);
  EXPECT_EQ(Rounded(99.5), 100);
  EXPECT_EQ(Rounded(-0.7), 0);  // adds 0.5 and truncates toward zero
  EXPECT_EQ(Truncated(1e12), INT32_MAX);
  EXPECT_EQ(Truncated(-1e12), INT32_MIN);
  EXPECT_EQ(Truncated(std::nan("")), 0);
}

}  // namespace
}  // namespace tavro::parameters
