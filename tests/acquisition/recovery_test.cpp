// A camera that refuses one start or stop step once (a transient fault)
// costs at most the acquisition it happened in: the camera stays attached,
// and the acquisitions after it, single and live, deliver the newest frame.
#include <gtest/gtest.h>

#include <string>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int32_t kWidth = 32;
constexpr int32_t kHeight = 8;
// Not a feature: the start of the camera's data stream.
constexpr const char* kStreamStart = "data-stream start";

class Recovery : public PluginHost {
 protected:
  // A single image waited for at once: its result, and when it succeeded,
  // the newest frame in the image.
  int32_t AcquireNewest(HostImage& image, int32_t left = 0, int32_t top = 0) {
    int32_t result = -1;
    StdoutOf([&] { result = Acquire(image, 1, 5); });
    if (result == 0) {
      EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono), left, top));
    }
    return result;
  }
  // Live start, a few frames, live stop: the start's result; the live image
  // holds the newest frame when it started.
  int32_t LiveRun(LiveImage& image) {
    const int32_t started = Live(image, 1);
    if (started == 0) {
      for (int frame = 0; frame < 3; ++frame) {
        image.ClearNewFrameFlag();
        EXPECT_TRUE(image.WaitForNewFrame());
      }
    }
    EXPECT_EQ(Live(image, 0), 0) << "status " << status;
    if (started == 0) {
      EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));
    }
    return started;
  }
};

TEST_F(Recovery, OneRefusedStepCostsOneAcquisitionAtMost) {
  enum class Step { kSingle, kLive };
  struct Case {
    const char* feature;  // refused once, or kStreamStart
    bool startedBefore;   // the camera was acquiring when the fault came
    Step step;            // the acquisition the fault hits
    bool costsIt;         // that acquisition fails
  };
  const Case cases[] = {
      {"AcquisitionStart", false, Step::kSingle, true},
      {kStreamStart, false, Step::kSingle, true},
      {kStreamStart, false, Step::kLive, true},
      {"AcquisitionStart", false, Step::kLive, true},
      {"TLParamsLocked", false, Step::kSingle, true},
      // Refused while stopping for the live start: the live run still starts.
      {"TLParamsLocked", true, Step::kLive, false},
      {"AcquisitionAbort", true, Step::kLive, false},
      // A refused abort after a lost frame.
      {"AcquisitionAbort", true, Step::kSingle, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.feature) + (c.startedBefore ? " while acquiring" : " at rest") +
                 (c.step == Step::kLive ? ", live start" : ", single image"));
    const int16_t number = SetupOn({kMono})[0];
    HostImage single(number, kWidth, kHeight, false);
    LiveImage live(number, kWidth, kHeight, false);
    if (c.startedBefore) {
      ASSERT_EQ(AcquireNewest(single), 0);
    }

    if (std::string(c.feature) == kStreamStart) {
      ASSERT_EQ(OxelSim_FailStreamStarts(kMono.id, 1, OXEL_RETURN_CODE_ERROR), 0);
    } else {
      ASSERT_EQ(OxelSim_FailFeatureWrites(kMono.id, c.feature, 1, OXEL_RETURN_CODE_ERROR), 0);
    }
    const bool lostFrame = c.step == Step::kSingle && std::string(c.feature) == "AcquisitionAbort";
    if (lostFrame) {
      ASSERT_EQ(OxelSim_DropFrames(kMono.id, 1), 0);
    }
    const int32_t result = c.step == Step::kLive ? LiveRun(live) : AcquireNewest(single);
    EXPECT_EQ(result, c.costsIt ? -1 : 0);
    EXPECT_EQ(system->tSlot[number].yAttached, 1u);
    EXPECT_EQ(system->yLive, 0u);

    // Everything after it works: single images, a live run, a new AOI.
    system->lError = 0;
    EXPECT_EQ(AcquireNewest(single), 0);
    EXPECT_EQ(LiveRun(live), 0);
    EXPECT_EQ(AcquireNewest(single), 0);
    single.SetAoi(16, 4, 16 + kWidth, 4 + kHeight);
    EXPECT_EQ(AcquireNewest(single, 16, 4), 0);
    EXPECT_EQ(system->lError, 0);
    TearDown();
  }
}

}  // namespace
}  // namespace tavro::testing
