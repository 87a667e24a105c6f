// Every image the plug-in delivers holds the frame of the newest trigger,
// whatever came before it: a single image never waited for, a live run, a
// time-out and a frame arriving after it, line-0 pulses between requests, a
// detach and re-attach.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int32_t kWidth = 48;
constexpr int32_t kHeight = 10;

class FrameIdentity : public PluginHost {
 protected:
  // The camera's newest frame is the one the image holds.
  ::testing::AssertionResult HoldsNewest(const HostImage& image) {
    return HoldsFrame(image, camera_.key == kColour.key, LastFrameId(camera_));
  }
  // A single image, waited for at once, holds the newest frame.
  void AcquireNewest(HostImage& image, uint32_t userValue) {
    const size_t before = finished.size();
    int32_t result = -1;
    StdoutOf([&] { result = Acquire(image, 1, userValue); });
    ASSERT_EQ(result, 0) << "status " << status;
    ASSERT_EQ(finished.size(), before + 1);
    EXPECT_EQ(finished.back().userValue, userValue);
    EXPECT_TRUE(HoldsNewest(image));
  }
  void DetachAndAttach(int16_t number) {
    ASSERT_EQ(Detach(number), 0);
    ASSERT_EQ(Attach(number), 0);
    ASSERT_EQ(system->tSlot[number].yAttached, 1u);
  }

  SimCamera camera_ = kMono;
};

TEST_F(FrameIdentity, PendingImageThenLiveThenSingleImages) {
  for (const SimCamera camera : {kMono, kColour}) {
    SCOPED_TRACE(camera.key);
    camera_ = camera;
    const bool colour = camera.key == kColour.key;
    for (const bool reattach : {false, true}) {
      SCOPED_TRACE(reattach ? "re-attached between the steps" : "attached throughout");
      const int16_t number = SetupOn({camera})[0];
      HostImage single(number, kWidth, kHeight, colour);
      LiveImage live(number, kWidth, kHeight, colour);

      // Left pending: its frame is finished but never collected.
      ASSERT_EQ(Acquire(single, 0, 1), 0);
      if (reattach) DetachAndAttach(number);
      ASSERT_EQ(Live(live, 1), 0);
      for (int frame = 0; frame < 3; ++frame) {
        live.ClearNewFrameFlag();
        ASSERT_TRUE(live.WaitForNewFrame());
      }
      ASSERT_EQ(Live(live, 0), 0);
      EXPECT_TRUE(HoldsNewest(live));
      if (reattach) DetachAndAttach(number);
      for (uint32_t k = 0; k < 3; ++k) AcquireNewest(single, 10 + k);
      TearDown();
    }
  }
}

TEST_F(FrameIdentity, HardwareTriggerAfterSoftwareAndBackWithPulsesBetween) {
  const int16_t number = SetupOn({kMono})[0];
  HostImage image(number, kWidth, kHeight, false);
  AcquireNewest(image, 1);
  for (int round = 0; round < 2; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    image.info.yHwTrigger = 1;
    for (uint32_t k = 0; k < 2; ++k) {
      ASSERT_EQ(Acquire(image, 0, 20 + k), 0);
      ASSERT_EQ(OxelSim_PulseLine0(kMono.id), 0);
      ASSERT_EQ(Wait(image), 0) << "status " << status;
      EXPECT_TRUE(HoldsNewest(image));
      // A pulse while no image is asked for: the camera may take it, the
      // next request must not deliver it.
      ASSERT_EQ(OxelSim_PulseLine0(kMono.id), 0);
    }
    if (round == 1) DetachAndAttach(number);
    image.info.yHwTrigger = 0;
    AcquireNewest(image, 30);
    AcquireNewest(image, 31);
  }
}

TEST_F(FrameIdentity, LateFrameAfterATimeOutIsNeverDelivered) {
  constexpr uint32_t kLateMs = 3300;  // beyond the plug-in's 3000 ms wait
  for (const bool live : {false, true}) {
    SCOPED_TRACE(live ? "live after the late frame" : "single images after the late frame");
    const int16_t number = SetupOn({kMono})[0];
    LiveImage image(number, kWidth, kHeight, false);
    AcquireNewest(image, 1);

    ASSERT_EQ(OxelSim_DelayFrames(kMono.id, 1, kLateMs), 0);
    const auto due = std::chrono::steady_clock::now() + std::chrono::milliseconds(kLateMs);
    int32_t result = 0;
    const std::string out = StdoutOf([&] { result = Acquire(image, 1, 2); });
    EXPECT_EQ(result, -1);
    EXPECT_EQ(status, uint32_t{ACQERR_WAIT_TIMEOUT});
    EXPECT_EQ(out, "_kxTavroWaitAcquire: Timeout waiting for acquisition to complete\n");
    DetachAndAttach(number);

    // Requests go on while the late frame is still on its way, and after it
    // would have come.
    if (live) {
      ASSERT_EQ(Live(image, 1), 0);
      while (std::chrono::steady_clock::now() < due + std::chrono::milliseconds(100)) {
        image.ClearNewFrameFlag();
        ASSERT_TRUE(image.WaitForNewFrame());
      }
      ASSERT_EQ(Live(image, 0), 0);
      EXPECT_TRUE(HoldsNewest(image));
    } else {
      uint32_t userValue = 10;
      while (std::chrono::steady_clock::now() < due + std::chrono::milliseconds(100)) {
        AcquireNewest(image, userValue++);
        ASSERT_FALSE(HasFailure());
      }
    }
    AcquireNewest(image, 3);
    TearDown();
  }
}

TEST_F(FrameIdentity, IncompleteFrameIsAFailureAndNotAnImage) {
  const int16_t number = SetupOn({kMono})[0];
  HostImage image(number, kWidth, kHeight, false);
  AcquireNewest(image, 1);
  const uint8_t shown = image.grey->At(0, 0);
  ASSERT_EQ(OxelSim_IncompleteFrames(kMono.id, 1), 0);
  int32_t result = 0;
  const std::string out = StdoutOf([&] { result = Acquire(image, 1, 2); });
  EXPECT_EQ(result, -1);
  EXPECT_EQ(status, uint32_t{ACQERR_WAIT_FAILED});
  EXPECT_EQ(out, "_kxTavroWaitAcquire: error mask 10\n");
  EXPECT_EQ(image.grey->At(0, 0), shown) << "the image was written";
  EXPECT_EQ(finished.size(), 1u);
  EXPECT_EQ(Status(image), ACQSTATUS_IDLE);
  AcquireNewest(image, 3);
}

TEST_F(FrameIdentity, TheSmallestPlaneNamesItsFrame) {
  // A 16 x 2 plane anywhere on the sensor, far from the drawn frame number,
  // in every pixel format and plane kind: the frame it holds, and no other
  // frame, not even one 16 frames older or a power of two away.
  struct Case {
    SimCamera camera;
    bool colourPlanes;
    int32_t left, top;
  };
  for (const Case c : {Case{kMono, false, 4, 0}, Case{kMono, false, 1000, 300},
                       Case{kColour, false, 1536, 1002}, Case{kColour, true, 8, 500}}) {
    SCOPED_TRACE(std::string(c.camera.key) + " at " + std::to_string(c.left) + "," +
                 std::to_string(c.top));
    camera_ = c.camera;
    const bool bgr = c.camera.key == kColour.key;
    const int16_t number = SetupOn({c.camera})[0];
    HostImage image(number, 16, 2, c.colourPlanes);
    image.SetAoi(c.left, c.top, c.left + 16, c.top + 2);
    int32_t result = -1;
    StdoutOf([&] { result = Acquire(image, 1, 5); });
    ASSERT_EQ(result, 0) << "status " << status;
    const uint64_t frame = LastFrameId(c.camera);
    EXPECT_TRUE(HoldsFrame(image, bgr, frame, c.left, c.top));
    for (const uint64_t away : {uint64_t{16}, uint64_t{32}, uint64_t{256}, uint64_t{1} << 20,
                                uint64_t{1} << 31, uint64_t{0x0F0F0F0F}}) {
      EXPECT_FALSE(HoldsFrame(image, bgr, frame - away, c.left, c.top)) << away << " older";
      EXPECT_FALSE(HoldsFrame(image, bgr, frame + away, c.left, c.top)) << away << " newer";
    }
    TearDown();
  }
}

}  // namespace
}  // namespace tavro::testing
