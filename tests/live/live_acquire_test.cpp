// Live acquisition through the plug-in's entry points: start and stop with
// their flags, frames arriving in the host's planes and live display, the
// refusals and messages, and live acquisition meeting single images, detach,
// teardown and an unplugged camera.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <thread>

#include "camera/display_drawing.h"
#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int32_t kWidth = 40;
constexpr int32_t kHeight = 24;
constexpr uint32_t kLiveUser = 0x51;
constexpr const char* kNotRunning = "Stop live acquire, but live acquire not running\n";

// The last live frame in the host's planes and in the live display, pixel for
// pixel, and nothing drawn beside the image in the display's spare columns.
void ExpectLastFrameShown(const LiveImage& image, const SimCamera& camera, bool colour) {
  const uint64_t frame = LastFrameId(camera);
  EXPECT_TRUE(HoldsFrame(image, colour, frame));
  int mismatches = 0;
  for (int32_t y = 0; y < kHeight; ++y) {
    for (int32_t x = 0; x < image.live.iStride; ++x) {
      const uint32_t shown = image.LivePixel(x, y);
      if (x >= kWidth) {
        mismatches += shown != LiveImage::kDisplayFill;
        continue;
      }
      uint32_t expected = 0;
      if (colour) {
        const uint8_t red = OxelSim_PatternBgr8(x, y, frame, 2);
        const uint8_t green = OxelSim_PatternBgr8(x, y, frame, 1);
        const uint8_t blue = OxelSim_PatternBgr8(x, y, frame, 0);
        mismatches += image.red->At(x, y) != red || image.green->At(x, y) != green ||
                      image.blue->At(x, y) != blue;
        expected = camera::DisplayPixel(red, green, blue);
      } else {
        const uint8_t grey = OxelSim_PatternMono8(x, y, frame);
        mismatches += image.grey->At(x, y) != grey;
        expected = camera::GreyDisplayTable()[grey];
      }
      mismatches += shown != expected;
    }
  }
  EXPECT_EQ(mismatches, 0) << camera.key << " frame " << frame;
}

class LiveAcquire : public PluginHost {};

TEST_F(LiveAcquire, RunsFramesIntoPlanesAndDisplayAndStopsWithoutReport) {
  struct Case {
    SimCamera camera;
    bool colour;
  };
  for (const Case& c : {Case{kMono, false}, Case{kColour, true}}) {
    SCOPED_TRACE(c.camera.key);
    const int16_t number = SetupOn({c.camera})[0];
    LiveImage image(number, kWidth, kHeight, c.colour);
    // Start and stop again and again: each run delivers frames and ends clean.
    for (int run = 0; run < 3; ++run) {
      ASSERT_EQ(Live(image, 1, kLiveUser), 0);
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(system->yLive, 1u);
      EXPECT_EQ(system->tSlot[number].yLive, 1u);
      EXPECT_EQ(system->ptLiveImage, &image.image);
      EXPECT_EQ(system->iLiveCamNum, number);
      EXPECT_EQ(system->qwLiveDisplayTag, LiveImage::kDisplayTag);
      // Every frame sets the flag again, not just the first.
      for (int frame = 0; frame < 3; ++frame) {
        ASSERT_TRUE(image.WaitForNewFrame()) << "frame " << frame;
        image.ClearNewFrameFlag();
      }
      // Waiting on the live image is refused while live runs.
      EXPECT_EQ(Wait(image), -1);
      EXPECT_EQ(status, uint32_t{ACQERR_LIVE_RUNNING});

      ASSERT_EQ(Live(image, 0), 0);
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(system->yLive, 0u);
      EXPECT_EQ(system->tSlot[number].yLive, 0u);
      EXPECT_TRUE(finished.empty());
      ExpectLastFrameShown(image, c.camera, c.colour);
    }
    TearDown();
  }
}

TEST_F(LiveAcquire, StopWithNothingRunningSaysSoAndReportsAPendingImage) {
  UseInstantCameras();
  const int16_t number = SetupOn({kMono})[0];
  LiveImage image(number, kWidth, kHeight, false);
  int32_t result = -1;
  EXPECT_EQ(StdoutOf([&] { result = Live(image, 0); }), kNotRunning);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(status, 0u);
  EXPECT_TRUE(finished.empty());

  // A single image still pending on that camera is reported finished.
  ASSERT_EQ(Acquire(image, 0, 7), 0);
  EXPECT_EQ(StdoutOf([&] { result = Live(image, 0); }), kNotRunning);
  EXPECT_EQ(result, 0);
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].image, &image.image);
  EXPECT_EQ(finished[0].userValue, 7u);
  // Its frame, never collected (the session's first, finished at once),
  // is not taken for the next request's.
  ASSERT_EQ(Acquire(image, 0, 8), 0);
  ASSERT_EQ(Acquire(image, 1, 9), 0);
  EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));

  // Live fields the host wrote itself, naming no camera, are forgotten.
  system->yLive = 1;
  system->iLiveCamNum = 16;
  EXPECT_EQ(Live(image, 0), -1);
  EXPECT_EQ(status, ACQERR_NO_CAMERA);
  EXPECT_EQ(system->yLive, 0u);
}

TEST_F(LiveAcquire, SecondStartIsRefusedAndLiveRunsOn) {
  const auto numbers = SetupOn({kMono, kColour});
  LiveImage first(numbers[0], kWidth, kHeight, false);
  LiveImage sameCamera(numbers[0], kWidth, kHeight, false);
  LiveImage otherCamera(numbers[1], kWidth, kHeight, true);
  ASSERT_EQ(Live(first, 1), 0);
  for (LiveImage* image : {&first, &sameCamera, &otherCamera}) {
    EXPECT_EQ(Live(*image, 1), -1);
    EXPECT_EQ(status, uint32_t{ACQERR_LIVE_RUNNING});
  }
  EXPECT_EQ(system->ptLiveImage, &first.image);
  EXPECT_EQ(system->iLiveCamNum, numbers[0]);
  // A wait for another image of the live camera takes no frame from the run.
  EXPECT_EQ(Wait(sameCamera), -1);
  EXPECT_EQ(status, uint32_t{ACQERR_LIVE_RUNNING});
  EXPECT_TRUE(finished.empty());
  first.ClearNewFrameFlag();
  EXPECT_TRUE(first.WaitForNewFrame());
  EXPECT_EQ(Live(first, 0), 0);
  EXPECT_EQ(otherCamera.NewFrameFlag(), 0u);
}

TEST_F(LiveAcquire, StartDropsAPendingSingleImageUnreported) {
  const int16_t number = SetupOn({kMono})[0];
  LiveImage single(number, kWidth, kHeight, false);
  LiveImage live(number, kWidth, kHeight, false);
  ASSERT_EQ(Acquire(single, 0, 9), 0);
  ASSERT_EQ(Live(live, 1, kLiveUser), 0);
  EXPECT_TRUE(live.WaitForNewFrame());
  ASSERT_EQ(Live(live, 0), 0);
  EXPECT_TRUE(finished.empty());
  // Nothing is left for the single image to collect.
  EXPECT_EQ(Wait(single), -1);
  EXPECT_EQ(status, uint32_t{ACQERR_NOT_ACQUIRING});
}

TEST_F(LiveAcquire, SingleImageOnAnotherCameraStopsLiveFirst) {
  const auto numbers = SetupOn({kMono, kColour});
  LiveImage live(numbers[0], kWidth, kHeight, false);
  LiveImage single(numbers[1], kWidth, kHeight, true);
  ASSERT_EQ(Live(live, 1, kLiveUser), 0);
  ASSERT_TRUE(live.WaitForNewFrame());

  ASSERT_EQ(Acquire(single, 1, 3), 0);
  EXPECT_EQ(system->yLive, 0u);
  EXPECT_EQ(system->tSlot[numbers[0]].yLive, 0u);
  // Only the single image is reported; the live run ended silently.
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].image, &single.image);
  EXPECT_EQ(single.red->At(5, 2), OxelSim_PatternBgr8(5, 2, LastFrameId(kColour), 2));
  // The live camera takes no further frame.
  const uint64_t lastLive = LastFrameId(kMono);
  ASSERT_EQ(Acquire(single, 1, 4), 0);
  EXPECT_EQ(LastFrameId(kMono), lastLive);
}

TEST_F(LiveAcquire, DetachEndsTheRunSoAnotherCameraCanGoLive) {
  const auto numbers = SetupOn({kMono, kColour});
  LiveImage image(numbers[0], kWidth, kHeight, false);
  LiveImage other(numbers[1], kWidth, kHeight, true);
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  ASSERT_TRUE(image.WaitForNewFrame());
  ASSERT_EQ(Detach(numbers[0]), 0);
  // Live has ended, and the host is told so once; the record still names
  // the image, as after a stop.
  EXPECT_EQ(system->yLive, 0u);
  EXPECT_EQ(system->tSlot[numbers[0]].yLive, 0u);
  EXPECT_EQ(system->ptLiveImage, &image.image);
  EXPECT_EQ(system->iLiveCamNum, numbers[0]);
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].image, &image.image);
  EXPECT_EQ(finished[0].userValue, kLiveUser);
  const uint64_t last = LastFrameId(kMono);
  EXPECT_EQ(Live(image, 0), -1);  // its camera is detached
  EXPECT_EQ(status, uint32_t{ACQERR_NO_CAMERA});

  ASSERT_EQ(Live(other, 1, kLiveUser), 0);
  EXPECT_EQ(status, 0u);
  ASSERT_TRUE(other.WaitForNewFrame());
  ASSERT_EQ(Live(other, 0), 0);
  ExpectLastFrameShown(other, kColour, true);
  EXPECT_EQ(LastFrameId(kMono), last);

  // An acquire re-attaches the detached camera and takes a frame.
  int32_t acquired = -1;
  StdoutOf([&] { acquired = Acquire(image, 1, 1); });
  ASSERT_EQ(acquired, 0);
  EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));
  ASSERT_EQ(finished.size(), 2u);
  EXPECT_EQ(finished[1].userValue, 1u);
}

TEST_F(LiveAcquire, OrderEndsARunWhoseImageLostItsMagic) {
  const auto numbers = SetupOn({kMono, kColour});
  LiveImage image(numbers[0], kWidth, kHeight, false);
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  ASSERT_TRUE(image.WaitForNewFrame());
  // The host stops vouching for the image; order does not read through it,
  // ends early, and yet the camera stops writing into it.
  image.image.lMagic = 0;
  std::array<CameraRecord, TAVRO_MAX_CAMERAS> wanted{};
  for (int n = 0; n < 2; ++n) {
    std::strcpy(wanted[n].szCamKey, system->tCam[n].szCamKey);
    wanted[n].yEnabled = 1;
    wanted[n].iCamNum = 1 - n;
  }
  StdoutOf([&] { plugin.order(system.get(), wanted.data()); });
  EXPECT_EQ(system->yLive, 0u);
  EXPECT_EQ(system->tSlot[numbers[0]].yLive, 0u);
  EXPECT_EQ(system->aiCamIndex[0], 0) << "order ended before re-mapping";
  const uint64_t last = LastFrameId(kMono);
  image.ClearNewFrameFlag();
  std::fill_n(image.grey->memory.data(), image.grey->memory.size(), HostPlane::kFill);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(LastFrameId(kMono), last);
  EXPECT_EQ(image.NewFrameFlag(), 0u);
  EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill);
  // The camera is at rest, and its next acquisition delivers a new frame.
  image.image.lMagic = TAVRO_IMAGE_MAGIC;
  ASSERT_EQ(Acquire(image, 1, 2), 0);
  EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));
  EXPECT_GT(LastFrameId(kMono), last);
}

// Waits, within a generous bound, until the camera has sent frame `id`.
bool WaitForFrameSent(const SimCamera& camera, uint64_t id) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (LastFrameId(camera) - id > (uint64_t{1} << 63)) {  // below id, across the wrap
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

TEST_F(LiveAcquire, StopDeliversTheFrameInProgress) {
  const int16_t number = SetupOn({kMono})[0];
  LiveImage image(number, kWidth, kHeight, false);
  // Every frame arrives half a second after its read-out: the worker fires
  // the next trigger as soon as a frame is in, so when the host sees a frame
  // the next one is on its way, for about half a second more.
  ASSERT_EQ(OxelSim_DelayFrames(kMono.id, -1, 500), 0);
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  ASSERT_TRUE(image.WaitForNewFrame());
  const uint64_t shown = LastFrameId(kMono);
  EXPECT_EQ(Live(image, 0), 0);
  // The stop waited for that frame and delivered it: the image holds a
  // frame newer than the one shown when the stop was asked for.
  EXPECT_NE(LastFrameId(kMono), shown);
  ExpectLastFrameShown(image, kMono, false);
  EXPECT_EQ(system->yLive, 0u);
  EXPECT_TRUE(finished.empty());
}

TEST_F(LiveAcquire, RunSkipsTornFramesAndGoesOn) {
  UseInstantCameras();
  const int16_t number = SetupOn({kMono})[0];
  LiveImage image(number, kWidth, kHeight, false);
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  ASSERT_TRUE(image.WaitForNewFrame());

  // Every frame from now on loses half its payload on the link.
  const uint64_t before = LastFrameId(kMono);
  ASSERT_EQ(OxelSim_IncompleteFrames(kMono.id, -1), 0);
  // Frames sent after these were all begun torn, and every complete one
  // before them has been delivered.
  ASSERT_TRUE(WaitForFrameSent(kMono, before + 5)) << "the run ended at a torn frame";
  image.ClearNewFrameFlag();
  std::fill_n(image.grey->memory.data(), image.grey->memory.size(), HostPlane::kFill);
  ASSERT_TRUE(WaitForFrameSent(kMono, before + 25)) << "the run ended at a torn frame";
  EXPECT_EQ(image.NewFrameFlag(), 0u) << "a torn frame was shown";
  EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill) << "a torn frame was delivered";
  EXPECT_EQ(Status(image), ACQSTATUS_LIVE);

  // Whole frames again: the same run shows them.
  ASSERT_EQ(OxelSim_IncompleteFrames(kMono.id, 0), 0);
  ASSERT_TRUE(image.WaitForNewFrame());
  ASSERT_EQ(Live(image, 0), 0);
  ExpectLastFrameShown(image, kMono, false);
  EXPECT_TRUE(finished.empty());
}

TEST_F(LiveAcquire, TeardownDuringLiveEndsItWithoutReport) {
  const int16_t number = SetupOn({kMono})[0];
  LiveImage image(number, kWidth, kHeight, false);
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  ASSERT_TRUE(image.WaitForNewFrame());
  EXPECT_EQ(TearDownSystem(), 0);
  EXPECT_EQ(system->yLive, 0u);
  EXPECT_TRUE(finished.empty());
  // After a new setup the same image runs live again.
  EXPECT_EQ(SetupOn({kMono})[0], number);
  image.ClearNewFrameFlag();
  ASSERT_EQ(Live(image, 1, kLiveUser), 0);
  EXPECT_TRUE(image.WaitForNewFrame());
  EXPECT_EQ(Live(image, 0), 0);
  ExpectLastFrameShown(image, kMono, false);
}

TEST_F(LiveAcquire, RunThatDiesEndsAndTellsTheHost) {
  struct Case {
    const char* what;
    bool unplug;  // else the trigger is refused once
    bool back;    // plugged in again before the host's next call
  };
  for (const Case& c : {Case{"unplugged", true, false}, Case{"unplugged and back", true, true},
                        Case{"trigger refused", false, false}}) {
    SCOPED_TRACE(c.what);
    finished.clear();
    const int16_t number = SetupOn({kMono})[0];
    LiveImage image(number, kWidth, kHeight, false);
    ASSERT_EQ(Live(image, 1, kLiveUser), 0);
    ASSERT_TRUE(image.WaitForNewFrame());
    if (c.unplug) {
      ASSERT_EQ(OxelSim_UnplugCamera(kMono.id), 0);
    } else {
      ASSERT_EQ(OxelSim_FailFeatureWrites(kMono.id, "TriggerSoftware", 1, OXEL_RETURN_CODE_ERROR),
                0);
    }
    // The status of the live image says so, polled as a host polls it.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (Status(image) == ACQSTATUS_LIVE && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
    }
    ASSERT_EQ(Status(image), ACQSTATUS_IDLE);
    EXPECT_EQ(status, 0u);

    // Calls that fail their own checks change nothing.
    HostImage stranger(9, kWidth, kHeight, false);  // host id 9 has no camera
    uint32_t word = 0;
    EXPECT_EQ(plugin.acquire(nullptr, 1, 0, &word, system.get()), -1);
    EXPECT_EQ(word, uint32_t{ACQERR_NO_IMAGE});
    EXPECT_EQ(plugin.liveAcquire(&stranger.image, 0, 0, &word, system.get()), -1);
    EXPECT_EQ(word, uint32_t{ACQERR_NO_CAMERA});
    EXPECT_EQ(plugin.acquire(&stranger.image, 1, 0, &word, system.get()), -1);
    EXPECT_EQ(word, uint32_t{ACQERR_NO_CAMERA});
    EXPECT_EQ(plugin.waitAcquire(nullptr, 0, 0, &word, system.get()), 0);
    EXPECT_EQ(system->yLive, 1u);
    EXPECT_EQ(system->tSlot[number].yLive, 1u);
    EXPECT_TRUE(finished.empty()) << "only a call that gets past its checks ends the run";
    const uint64_t last = LastFrameId(kMono);

    if (c.back) {
      // A start is refused as while live ran, and ends the run on the way,
      // reporting it once; the next start works on a new session.
      OxelSim_ReplugCamera(kMono.id);
      EXPECT_EQ(Live(image, 1, kLiveUser + 1), -1);
      EXPECT_EQ(status, uint32_t{ACQERR_LIVE_RUNNING});
      ASSERT_EQ(finished.size(), 1u);
      EXPECT_EQ(system->yLive, 0u);
      image.ClearNewFrameFlag();
      ASSERT_EQ(Live(image, 1, kLiveUser + 1), 0);
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(system->lError, 0);
      ASSERT_TRUE(image.WaitForNewFrame());
      ASSERT_EQ(Live(image, 0), 0);
      ExpectLastFrameShown(image, kMono, false);
      ASSERT_EQ(finished.size(), 1u);
    } else if (c.unplug) {
      // A stop stops the dead run as any other, silently, and reports it.
      int32_t stopped = -1;
      EXPECT_EQ(StdoutOf([&] { stopped = Live(image, 0); }), "");
      EXPECT_EQ(stopped, 0);
      EXPECT_EQ(status, 0u);
      ASSERT_EQ(finished.size(), 1u);
      EXPECT_EQ(LastFrameId(kMono), last);
      // A camera that does not answer cannot start: the host hears of the
      // failed start too, and the camera is detached, so live is not marked.
      EXPECT_EQ(Live(image, 1, kLiveUser), -1);
      EXPECT_EQ(status, 0u);
      EXPECT_EQ(system->lError, -1);
      EXPECT_EQ(system->yLive, 0u);
      EXPECT_EQ(system->tSlot[number].yAttached, 0u);
      ASSERT_EQ(finished.size(), 2u);
      EXPECT_EQ(Live(image, 0), -1);
      EXPECT_EQ(status, uint32_t{ACQERR_NO_CAMERA});
      // Plugged in and attached again, it goes live.
      OxelSim_ReplugCamera(kMono.id);
      ASSERT_EQ(Attach(number), 0);
      image.ClearNewFrameFlag();
      ASSERT_EQ(Live(image, 1, kLiveUser), 0);
      ASSERT_TRUE(image.WaitForNewFrame());
      ASSERT_EQ(Live(image, 0), 0);
      ExpectLastFrameShown(image, kMono, false);
      EXPECT_EQ(finished.size(), 2u);
    } else {
      // A wait on the live image is refused as while live ran, and ends
      // the run, reporting it once; a healthy camera then starts at once.
      EXPECT_EQ(Wait(image), -1);
      EXPECT_EQ(status, uint32_t{ACQERR_LIVE_RUNNING});
      ASSERT_EQ(finished.size(), 1u);
      EXPECT_EQ(system->yLive, 0u);
      EXPECT_EQ(system->tSlot[number].yLive, 0u);
      ASSERT_EQ(Live(image, 1, kLiveUser + 1), 0);
      EXPECT_EQ(status, 0u);
      image.ClearNewFrameFlag();
      ASSERT_TRUE(image.WaitForNewFrame());
      ASSERT_EQ(Live(image, 0), 0);
      ExpectLastFrameShown(image, kMono, false);
      ASSERT_EQ(finished.size(), 1u);
    }
    EXPECT_EQ(finished[0].image, &image.image);
    EXPECT_EQ(finished[0].userValue, kLiveUser);
    EXPECT_EQ(system->yLive, 0u);
    TearDown();
  }
}

}  // namespace
}  // namespace tavro::testing
