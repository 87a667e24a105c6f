// When frames exist: a triggered frame is read out exposure + read-out time
// after its trigger, a trigger while the camera is busy is ignored and
// counted, the free run keeps to the frame rate, and an instant camera has
// its frame at the trigger.
#include <chrono>
#include <cmath>
#include <thread>

#include "sim_world.h"

namespace simtest {
namespace {

using Clock = std::chrono::steady_clock;

// Long enough that nothing a test does between two calls takes as long.
constexpr double kLongExposureUs = 300000.0;

uint64_t NowNs() {
  return static_cast<uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch())
          .count());
}

// A frame taken from the stream and queued again, and when the wait returned.
struct Frame : Waited {
  uint64_t arrivedNs = 0;
};

Frame NextFrame(const Camera& camera, uint64_t timeoutMs) {
  Frame frame{WaitForFrame(camera, timeoutMs)};
  frame.arrivedNs = NowNs();
  if (frame.code == OXEL_RETURN_CODE_SUCCESS) {
    EXPECT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, frame.buffer), OXEL_RETURN_CODE_SUCCESS);
  }
  return frame;
}

uint64_t IgnoredTriggers(const char* deviceId) {
  uint64_t count = 0;
  EXPECT_EQ(OxelSim_GetIgnoredTriggerCount(deviceId, &count), OXEL_RETURN_CODE_SUCCESS);
  return count;
}

uint64_t Ns(double seconds) {
  return static_cast<uint64_t>(seconds * 1e9);
}

class Timing : public BundledWorld {
 protected:
  // The colour camera, software triggered, with the given exposure, format
  // and link limit, acquiring.
  Camera Colour(double exposureUs, const char* format, int64_t linkLimit) {
    Camera camera = Camera::Open(*world_, kColourId);
    EXPECT_EQ(camera.SetEnum("PixelFormat", format), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(camera.SetInt("DeviceLinkThroughputLimit", linkLimit), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(camera.SetFloat("ExposureTime", exposureUs), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    camera.AnnounceAndQueue(4);
    camera.StartAcquisition();
    return camera;
  }
};

TEST_F(Timing, ATriggeredFrameIsReadOutAfterExposureAndTheSlowerOfSensorAndLink) {
  // BGR8 at full sensor: 7062528 bytes; the sensor reads out in 1/87.3 s.
  struct Case {
    const char* format;
    int64_t linkLimit;
    double readOutSeconds;
  };
  const Case cases[] = {
      {"BGR8", 500000000, 7062528.0 / 500000000},  // the link is slower
      {"BGR8", 100000000, 7062528.0 / 100000000},
      {"Mono8", 500000000, 1.0 / 87.3},  // the sensor is slower
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.format) + " " + std::to_string(c.linkLimit));
    ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
    Camera camera = Colour(kLongExposureUs, c.format, c.linkLimit);
    const uint64_t triggeredNs = NowNs();
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(NextFrame(camera, 0).code, OXEL_RETURN_CODE_TIMEOUT)
        << "the frame exists before its exposure ended";
    const Frame frame = NextFrame(camera, kFrameWaitMs);
    ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(frame.frameId, OXEL_SIM_FIRST_FRAME_ID);
    EXPECT_GE(frame.timestampNs, triggeredNs);
    EXPECT_GE(frame.arrivedNs - frame.timestampNs, Ns(kLongExposureUs / 1e6 + c.readOutSeconds));
    camera.Close();
  }
}

TEST_F(Timing, TriggersWhileTheCameraIsBusyAreIgnoredAndCounted) {
  Camera camera = Colour(kLongExposureUs, "BGR8", 500000000);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_PulseLine0(kColourId), OXEL_RETURN_CODE_SUCCESS);  // not its trigger
  EXPECT_EQ(IgnoredTriggers(kColourId), 1u);
  Frame frame = NextFrame(camera, kFrameWaitMs);
  ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(frame.frameId, OXEL_SIM_FIRST_FRAME_ID);

  // Free again once the frame is read out; the ignored trigger took no ID.
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  frame = NextFrame(camera, kFrameWaitMs);
  ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(frame.frameId, OXEL_SIM_FIRST_FRAME_ID + 1);
  EXPECT_EQ(IgnoredTriggers(kColourId), 1u);
  EXPECT_EQ(WrongPixels(frame.buffer, OXEL_SIM_PIXEL_FORMAT_BGR8), 0u);

  // Opening the camera again starts the count afresh.
  camera.Close();
  camera = Camera::Open(*world_, kColourId);
  EXPECT_EQ(IgnoredTriggers(kColourId), 0u);
}

TEST_F(Timing, AFrameInFlightFinishesOnStopAndIsLostOnAbortOrAStreamStop) {
  struct Case {
    const char* what;
    bool arrives;
  };
  const Case cases[] = {{"AcquisitionStop", true}, {"AcquisitionAbort", false}, {"stream", false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
    Camera camera = Colour(kLongExposureUs, "Mono8", 500000000);
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    if (std::string(c.what) == "stream") {
      ASSERT_EQ(OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT),
                OXEL_RETURN_CODE_SUCCESS);
      ASSERT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                                 OXEL_INFINITE_NUMBER),
                OXEL_RETURN_CODE_SUCCESS);
    } else {
      ASSERT_EQ(camera.Execute(c.what), OXEL_RETURN_CODE_SUCCESS);
    }
    // Long past the frame's time when it arrives at all.
    const Frame frame = NextFrame(camera, 1000);
    if (c.arrives) {
      ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(frame.frameId, OXEL_SIM_FIRST_FRAME_ID);
    } else {
      EXPECT_EQ(frame.code, OXEL_RETURN_CODE_TIMEOUT) << "frame " << frame.frameId << " arrived";
    }
    camera.Close();
  }
}

TEST_F(Timing, AWaitForAFrameInFlightEndsOnKillWait) {
  Camera camera = Colour(kLongExposureUs, "Mono8", 500000000);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  std::thread killer([&] {
    // A kill that comes before the wait starts ends that wait all the same.
    EXPECT_EQ(OXEL_DataStream_KillWait(camera.stream), OXEL_RETURN_CODE_SUCCESS);
  });
  const Frame frame = NextFrame(camera, OXEL_INFINITE_NUMBER);
  killer.join();
  EXPECT_EQ(frame.code, OXEL_RETURN_CODE_ABORTED);
}

TEST_F(Timing, TheFreeRunKeepsToTheFrameRate) {
  Camera camera = Camera::Open(*world_, kMonoId);
  ASSERT_EQ(camera.SetFloat("AcquisitionFrameRate", 50.0), OXEL_RETURN_CODE_SUCCESS);
  camera.AnnounceAndQueue(4);
  camera.StartAcquisition();
  Frame previous = NextFrame(camera, kFrameWaitMs);
  ASSERT_EQ(previous.code, OXEL_RETURN_CODE_SUCCESS);
  for (int k = 0; k < 5; ++k) {
    const Frame frame = NextFrame(camera, kFrameWaitMs);
    ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(frame.frameId, previous.frameId + 1);
    EXPECT_GE(frame.timestampNs - previous.timestampNs, Ns(1.0 / 50.0));
    previous = frame;
  }
}

class InstantFrames : public BundledWorld {
 protected:
  InstantFrames() : BundledWorld(true) {}
};

TEST_F(InstantFrames, AnInstantCameraHasItsFrameAtTheTriggerWhateverTheExposure) {
  Camera camera = Camera::Open(*world_, kColourId);
  ASSERT_EQ(camera.SetFloat("ExposureTime", 1000000.0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
  camera.AnnounceAndQueue(3);
  camera.StartAcquisition();
  for (uint64_t k = 0; k < 3; ++k) {
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    const Frame frame = NextFrame(camera, 0);
    ASSERT_EQ(frame.code, OXEL_RETURN_CODE_SUCCESS) << k;
    EXPECT_EQ(frame.frameId, OXEL_SIM_FIRST_FRAME_ID + k);
    EXPECT_EQ(WrongPixels(frame.buffer, OXEL_SIM_PIXEL_FORMAT_BGR8), 0u);
  }
  EXPECT_EQ(IgnoredTriggers(kColourId), 0u);
  camera.Close();
}

}  // namespace
}  // namespace simtest
