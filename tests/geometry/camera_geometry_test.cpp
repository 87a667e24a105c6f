// AOI and pixel format operations against the simulated cameras, whose
// offsets shrink the size when it leaves them no room, as on many cameras.
#include <gtest/gtest.h>

#include "camera/simulated_camera.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::IntegerNode;
using simtest::kColourCameraId;
using simtest::kMonoCameraId;
using simtest::WriteCount;

class CameraGeometryTest : public simtest::SimulatedCameraTest {
 protected:
  void SetUp() override {
    SimulatedCameraTest::SetUp();
    camera_ = simtest::OpenSimulatedCamera(kColourCameraId);
    ASSERT_TRUE(camera_);
  }
  int64_t Value(const char* feature) {
    return simtest::FeatureValue<IntegerNode>(*camera_, feature);
  }
  geometry::AoiRect CameraAoi() {
    const auto left = static_cast<int32_t>(Value("OffsetX"));
    const auto top = static_cast<int32_t>(Value("OffsetY"));
    return {left, top, left + static_cast<int32_t>(Value("Width")),
            top + static_cast<int32_t>(Value("Height"))};
  }
  std::unique_ptr<OxelCamera> camera_;
};

TEST_F(CameraGeometryTest, RequestsAreFittedToTheLimitsReadFromTheCamera) {
  // With the smallest size selected, the offsets have their widest range.
  geometry::AoiRect smallest{0, 0, 16, 2};
  camera_->aoiLimits.reset();
  ASSERT_TRUE(camera_->SetAoi(smallest));
  camera_->ReadAoiLimits();
  ASSERT_TRUE(camera_->aoiLimits);
  EXPECT_EQ(camera_->AoiLimitsText(),
            "minXY:0,0::maxXY:1920,1214::incXY:8,2::minWH:16,2::maxWH:1936,1216::incWH:8,2");

  geometry::AoiRect request{13, 5, 113, 12};
  ASSERT_TRUE(camera_->SetAoi(request));
  const geometry::AoiRect fitted{8, 4, 104, 10};
  EXPECT_EQ(request, fitted) << "the caller sees the fitted rectangle";
  EXPECT_EQ(CameraAoi(), fitted);
  EXPECT_EQ(camera_->currentAoi, (geometry::AoiRect{13, 5, 113, 12})) << "kept as requested";
}

TEST_F(CameraGeometryTest, OffsetsAreWrittenBeforeSizes) {
  // From the full sensor, the camera takes the offset first by shrinking the
  // width, so an AOI with an offset is written whole.
  geometry::AoiRect request{8, 4, 104, 10};
  ASSERT_TRUE(camera_->SetAoi(request));
  EXPECT_EQ(CameraAoi(), (geometry::AoiRect{8, 4, 104, 10}));

  // A camera that refuses "OffsetX" must not have seen the new width first.
  ASSERT_TRUE(camera_->ApplyFullAoi());
  camera_->aoiLimits.reset();
  ASSERT_EQ(OxelSim_FailFeatureWrites(kColourCameraId, "OffsetX", 1, OXEL_RETURN_CODE_OUT_OF_RANGE),
            0);
  const uint64_t widthWrites = WriteCount(kColourCameraId, "Width");
  const uint64_t offsetWrites = WriteCount(kColourCameraId, "OffsetX");
  request = {8, 0, 1928, 1216};
  EXPECT_FALSE(camera_->SetAoi(request));
  EXPECT_EQ(WriteCount(kColourCameraId, "OffsetX"), offsetWrites + 1);
  EXPECT_EQ(WriteCount(kColourCameraId, "Width"), widthWrites);
  // Part of a refused rectangle may have reached the camera: the next
  // request writes again, whatever it is.
  EXPECT_FALSE(camera_->currentAoi.has_value());
  EXPECT_EQ(CameraAoi(), (geometry::AoiRect{0, 0, 1936, 1216}));
}

TEST_F(CameraGeometryTest, RepeatedRequestsWriteOnceAndFullSensorRestoresTheSize) {
  const uint64_t widthWrites = WriteCount(kColourCameraId, "Width");
  const geometry::AoiRect request{0, 0, 640, 480};
  ASSERT_TRUE(camera_->ApplyRequestedAoi(request));
  ASSERT_TRUE(camera_->ApplyRequestedAoi(request));
  EXPECT_EQ(WriteCount(kColourCameraId, "Width"), widthWrites + 1);
  EXPECT_EQ(CameraAoi(), request);

  ASSERT_TRUE(camera_->ApplyFullAoi());
  EXPECT_EQ(Value("Width"), 1936);
  EXPECT_EQ(Value("Height"), 1216);
  ASSERT_TRUE(camera_->ApplyFullAoi());
  EXPECT_EQ(WriteCount(kColourCameraId, "Width"), widthWrites + 2);
}

TEST_F(CameraGeometryTest, PixelFormatFollowsWhatTheCameraOffers) {
  EXPECT_TRUE(camera_->isColour);
  EXPECT_EQ(camera_->pixelFormatName, "BGR8");
  EXPECT_EQ(camera_->bitsPerPixel, 24);
  EXPECT_EQ(simtest::EntryOf(*camera_, "PixelFormat"), "BGR8");

  ASSERT_TRUE(camera_->SetMono8());
  EXPECT_EQ(camera_->bitsPerPixel, 8);
  EXPECT_EQ(simtest::EntryOf(*camera_, "PixelFormat"), "Mono8");
  EXPECT_TRUE(camera_->SupportsBgr8());  // offered whatever the current format

  auto mono = simtest::OpenSimulatedCamera(kMonoCameraId);
  ASSERT_TRUE(mono);
  EXPECT_FALSE(mono->SupportsBgr8());
  EXPECT_FALSE(mono->isColour);
  EXPECT_EQ(mono->pixelFormatName, "Mono8");
  EXPECT_FALSE(mono->SetBgr8());
  EXPECT_EQ(mono->bitsPerPixel, 8) << "a refused format changes nothing";
  EXPECT_EQ(mono->pixelFormatName, "Mono8");
}

TEST_F(CameraGeometryTest, UnopenedCameraReportsFailures) {
  OxelCamera unopened;
  EXPECT_EQ(unopened.ReadWidthMax(), -1);
  EXPECT_EQ(unopened.ReadHeightMax(), -1);
  unopened.ReadAoiLimits();
  EXPECT_FALSE(unopened.aoiLimits);
  geometry::AoiRect request{0, 0, 8, 8};
  EXPECT_FALSE(unopened.SetAoi(request));
  EXPECT_FALSE(unopened.SupportsBgr8());
  EXPECT_FALSE(unopened.SetMono8());
}

}  // namespace
}  // namespace tavro::camera
