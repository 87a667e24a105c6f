// The camera object's worker: live loop, Stop, silent time-outs, and
// destruction while the loop runs.
#include <gtest/gtest.h>

#include <atomic>

#include "camera/simulated_camera.h"

namespace tavro::camera {
namespace {

using simtest::HostImage;
using simtest::kMonoCameraId;
using simtest::WaitUntil;

void CountFrame(void* counter) {
  ++*static_cast<std::atomic<int>*>(counter);
}

class AcquireWorkerTest : public simtest::SimulatedCameraTest {
 protected:
  // A mono camera bound to a full-size grey image, counting its frames.
  std::unique_ptr<OxelCamera> OpenLiveCamera() {
    auto camera = simtest::OpenSimulatedCamera(kMonoCameraId);
    if (!camera) return nullptr;
    image_.Bind(*camera, false);
    camera->frameCallback = CountFrame;
    camera->frameCallbackArg = &frames_;
    camera->worker.frameDoneEvent = &frameDone_;
    return camera;
  }

  HostImage image_{1280, 1024};
  std::atomic<int> frames_{0};
  platform::ManualResetEvent frameDone_;
};

TEST_F(AcquireWorkerTest, LiveLoopDeliversFramesUntilStopped) {
  auto camera = OpenLiveCamera();
  ASSERT_TRUE(camera);
  ASSERT_TRUE(camera->StartLive());
  ASSERT_TRUE(WaitUntil([&] { return frames_ >= 3; }));
  EXPECT_TRUE(frameDone_.WaitFor(std::chrono::milliseconds(0)));

  EXPECT_TRUE(camera->Stop());
  EXPECT_EQ(camera->worker.workerState, kWorkerIdle);
  EXPECT_EQ(camera->worker.pendingRequest, kRequestNone);
  EXPECT_FALSE(camera->acquisitionStarted);
  EXPECT_EQ(simtest::FeatureValue<oxel::core::nodes::IntegerNode>(*camera, "TLParamsLocked"), 0);

  // Stop waits for the worker to leave its loop: the last frame sent is in
  // the image whole, not torn by a copy still running.
  const uint64_t frameId = simtest::LastFrameId(kMonoCameraId);
  for (int32_t y = 0; y < image_.height; ++y) {
    for (int32_t x = 0; x < image_.width; ++x) {
      ASSERT_EQ(image_.Grey(x, y), OxelSim_PatternMono8(x, y, frameId)) << x << "," << y;
    }
  }
}

TEST_F(AcquireWorkerTest, TimedOutFrameEndsTheLoopSilentlyAndALaterStartResumes) {
  auto camera = OpenLiveCamera();
  ASSERT_TRUE(camera);
  ASSERT_EQ(OxelSim_DropFrames(kMonoCameraId, -1), 0);

  testing::internal::CaptureStdout();
  ASSERT_TRUE(camera->StartLive());
  ASSERT_TRUE(WaitUntil([&] { return camera->worker.workerState == kWorkerFirstFrame; }));
  ASSERT_TRUE(WaitUntil([&] { return camera->worker.workerState == kWorkerIdle; }));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(frames_, 0);
  EXPECT_EQ(image_.Grey(0, 0), HostImage::kFill);

  ASSERT_EQ(OxelSim_DropFrames(kMonoCameraId, 0), 0);
  ASSERT_TRUE(camera->StartLive());
  EXPECT_TRUE(WaitUntil([&] { return frames_ >= 2; }));
  EXPECT_TRUE(camera->Stop());
}

TEST_F(AcquireWorkerTest, DestructionDuringLiveAcquisitionEndsTheWorkerAndReleasesTheCamera) {
  // Before the first frame (worker still waiting for it) and while frames
  // flow: both must end the worker before the object goes away.
  for (const int framesBeforeDestruction : {0, 3}) {
    SCOPED_TRACE(framesBeforeDestruction);
    frames_ = 0;
    auto camera = OpenLiveCamera();
    ASSERT_TRUE(camera);
    ASSERT_TRUE(camera->StartLive());
    ASSERT_TRUE(WaitUntil([&] { return frames_ >= framesBeforeDestruction; }));
    camera.reset();
    const int framesAtDestruction = frames_;

    // The device was closed: it can be opened again, and the old worker
    // delivers nothing more into the image.
    auto again = simtest::OpenSimulatedCamera(kMonoCameraId);
    ASSERT_TRUE(again);
    EXPECT_EQ(frames_, framesAtDestruction);
  }
}

}  // namespace
}  // namespace tavro::camera
