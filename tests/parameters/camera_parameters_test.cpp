// Trigger mode, exposure, gain, black level and throughput against the
// simulated cameras: what the camera sees, and what the host reads back.
#include <gtest/gtest.h>

#include <algorithm>

#include "camera/simulated_camera.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::FloatNode;
using oxel::core::nodes::IntegerNode;
using simtest::kColourCameraId;
using simtest::kMonoCameraId;
using simtest::WriteCount;

class CameraParametersTest : public simtest::SimulatedCameraTest {
 protected:
  void SetUp() override {
    SimulatedCameraTest::SetUp();
    camera_ = simtest::OpenSimulatedCamera(kMonoCameraId);
    ASSERT_TRUE(camera_);
  }
  uint64_t Writes(const char* feature) { return WriteCount(kMonoCameraId, feature); }
  std::unique_ptr<OxelCamera> camera_;
};

TEST_F(CameraParametersTest, CachedTriggerModeSkipsTheCamera) {
  using namespace parameters;
  ASSERT_TRUE(camera_->SetTriggerMode(TriggerModeLine0Rising, false));
  const uint64_t modeWrites = Writes("TriggerMode");
  const uint64_t sourceWrites = Writes("TriggerSource");
  const uint64_t activationWrites = Writes("TriggerActivation");

  EXPECT_TRUE(camera_->SetTriggerMode(TriggerModeLine0Rising, false));
  EXPECT_EQ(Writes("TriggerMode"), modeWrites);

  EXPECT_TRUE(camera_->SetTriggerMode(TriggerModeLine0Rising, true)) << "forced";
  EXPECT_EQ(Writes("TriggerMode"), modeWrites + 1);
  EXPECT_EQ(Writes("TriggerSource"), sourceWrites + 1);
  EXPECT_EQ(Writes("TriggerActivation"), activationWrites + 1);

  EXPECT_TRUE(camera_->SetTriggerMode(7, false)) << "unknown modes are remembered";
  EXPECT_EQ(camera_->triggerMode, 7);
  EXPECT_EQ(Writes("TriggerMode"), modeWrites + 1);
}

TEST_F(CameraParametersTest, ModesSelectTheirEntriesInOrder) {
  struct Case {
    int32_t mode;
    const char *triggerMode, *source, *activation;
  };
  const Case cases[] = {{parameters::TriggerModeLine0Falling, "On", "Line0", "FallingEdge"},
                        {parameters::TriggerModeSoftware, "On", "Software", "FallingEdge"},
                        {parameters::TriggerModeLine0Rising, "On", "Line0", "RisingEdge"},
                        {parameters::TriggerModeOff, "Off", "Line0", "RisingEdge"}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.mode);
    ASSERT_TRUE(camera_->SetTriggerMode(c.mode, false));
    EXPECT_EQ(simtest::EntryOf(*camera_, "TriggerMode"), c.triggerMode);
    EXPECT_EQ(simtest::EntryOf(*camera_, "TriggerSource"), c.source);
    EXPECT_EQ(simtest::EntryOf(*camera_, "TriggerActivation"), c.activation);
  }
}

TEST_F(CameraParametersTest, FailedTriggerWriteLeavesTheCacheSoTheNextRequestWritesAgain) {
  using namespace parameters;
  ASSERT_TRUE(camera_->SetTriggerMode(TriggerModeOff, true));
  ASSERT_EQ(
      OxelSim_FailFeatureWrites(kMonoCameraId, "TriggerSource", 1, OXEL_RETURN_CODE_BAD_ACCESS), 0);
  EXPECT_FALSE(camera_->SetTriggerMode(TriggerModeSoftware, false));
  EXPECT_EQ(camera_->triggerMode, TriggerModeOff);
  EXPECT_EQ(simtest::EntryOf(*camera_, "TriggerMode"), "On") << "writes made stay made";

  const uint64_t sourceWrites = Writes("TriggerSource");
  EXPECT_TRUE(camera_->SetTriggerMode(TriggerModeSoftware, false));
  EXPECT_EQ(Writes("TriggerSource"), sourceWrites + 1);
  EXPECT_EQ(camera_->triggerMode, TriggerModeSoftware);
}

TEST_F(CameraParametersTest, ExposureIsClampedAndLeavesTheCameraFreeRunningAtFullRate) {
  // Range 13 to 1e7; the range as the host sees it is checked by discovery.
  struct Case {
    double request, written;
  };
  for (const Case& c : {Case{10.0, 13.0}, Case{2e7, 1e7}, Case{1234.0, 1234.0}}) {
    SCOPED_TRACE(c.request);
    EXPECT_TRUE(camera_->SetExposure(c.request));
    EXPECT_EQ(camera_->GetExposure(), c.written);
    EXPECT_EQ(simtest::EntryOf(*camera_, "TriggerMode"), "Off");
    EXPECT_EQ(camera_->triggerMode, parameters::TriggerModeOff);
    const auto rate = Feature<FloatNode>(camera_->nodeMap, "AcquisitionFrameRate");
    EXPECT_EQ(rate->Value(), rate->Maximum());
  }
  EXPECT_TRUE(camera_->IsExposureSupported());
  OxelCamera unopened;
  EXPECT_EQ(unopened.GetExposure(), -1.0);
  EXPECT_FALSE(unopened.SetExposure(100.0));
}

TEST_F(CameraParametersTest, GainAndBlackLevelMapOntoTheDiscoveredRanges) {
  // The mono camera's analog gain runs from 1.0 to 16.0.
  ASSERT_TRUE(camera_->DiscoverGain());
  EXPECT_EQ(simtest::EntryOf(*camera_, "GainSelector"), "AnalogAll");
  EXPECT_EQ(camera_->gainMinimum, 1.0);
  EXPECT_EQ(camera_->gainRange, 15.0);
  struct Case {
    int32_t host;
    double camera;
  };
  // The scale's own cases are in the host scaling tests.
  for (const Case& c : {Case{150, 16.0}, Case{50, 8.5}}) {
    SCOPED_TRACE(c.host);
    ASSERT_TRUE(camera_->SetGain(c.host));
    EXPECT_DOUBLE_EQ(simtest::FeatureValue<FloatNode>(*camera_, "Gain"), c.camera);
    EXPECT_EQ(camera_->GetGain(), std::min(c.host, 100));
  }

  ASSERT_TRUE(camera_->DiscoverBlackLevel());
  ASSERT_TRUE(camera_->SetBlackLevel(255));
  EXPECT_DOUBLE_EQ(simtest::FeatureValue<FloatNode>(*camera_, "BlackLevel"),
                   camera_->blackLevelMinimum + camera_->blackLevelRange);
  ASSERT_TRUE(camera_->SetBlackLevel(128));
  EXPECT_EQ(camera_->GetBlackLevel(), 128);

  // The colour camera offers neither "AnalogAll" nor "DigitalAll".
  auto colour = simtest::OpenSimulatedCamera(kColourCameraId);
  ASSERT_TRUE(colour);
  ASSERT_TRUE(colour->DiscoverGain());
  EXPECT_EQ(simtest::EntryOf(*colour, "GainSelector"), "All");
}

TEST_F(CameraParametersTest, ThroughputIsWrittenInWholeIncrements) {
  ASSERT_TRUE(camera_->DiscoverThroughputLimit());
  const int64_t minimum = camera_->throughputMinimum;
  const int64_t range = camera_->throughputRange;
  const int64_t increment = camera_->throughputIncrement;
  ASSERT_GT(range, 0);
  for (const int32_t percent : {0, 37, 100, 120, -5}) {
    SCOPED_TRACE(percent);
    ASSERT_TRUE(camera_->SetThroughputLimit(percent));
    const int64_t value = simtest::FeatureValue<IntegerNode>(*camera_, "DeviceLinkThroughputLimit");
    EXPECT_EQ((value - minimum) % increment, 0);
    EXPECT_EQ(camera_->GetThroughputLimit(), std::clamp(percent, 0, 100));
  }
  OxelCamera unopened;
  EXPECT_FALSE(unopened.DiscoverThroughputLimit());
  EXPECT_EQ(unopened.GetThroughputLimit(), -1);
}

}  // namespace
}  // namespace tavro::camera
