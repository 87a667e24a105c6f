// Frames: which triggers make them, what they hold, and how buffers move
// through the data stream's queues.
#include <chrono>
#include <future>
#include <thread>

#include "sim_world.h"

namespace simtest {
namespace {

class Acquisition : public BundledWorld {
 protected:
  static OXEL_RETURN_CODE Wait(const Camera& camera, uint64_t timeoutMs, OXEL_BUFFER* buffer) {
    return OXEL_DataStream_WaitForFinishedBuffer(camera.stream, timeoutMs, buffer);
  }
  static size_t Count(OXEL_RETURN_CODE (*query)(OXEL_DATA_STREAM, size_t*), const Camera& camera) {
    size_t count = 0;
    EXPECT_EQ(query(camera.stream, &count), OXEL_RETURN_CODE_SUCCESS);
    return count;
  }
  static uint64_t FrameId(OXEL_BUFFER buffer) {
    uint64_t id = 0;
    EXPECT_EQ(OXEL_Buffer_GetFrameID(buffer, &id), OXEL_RETURN_CODE_SUCCESS);
    return id;
  }
  static void UseSoftwareTrigger(const Camera& camera) {
    ASSERT_EQ(camera.SetEnum("TriggerSelector", "ExposureStart"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerSource", "Software"), OXEL_RETURN_CODE_SUCCESS);
  }
};

TEST_F(Acquisition, SoftwareTriggeredFramesHoldThePatternOfTheirAoi) {
  struct Case {
    const char* camera;
    const char* format;
    int64_t offsetX, offsetY, width, height;
  };
  const Case cases[] = {
      {kColourId, "BGR8", 0, 0, 1936, 1216},
      {kColourId, "Mono8", 64, 10, 200, 30},
      {kColourId, "BGR8", 1920, 1214, 16, 2},
      {kMonoId, "Mono8", 4, 2, 36, 4},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.camera) + " " + c.format + " x " + std::to_string(c.offsetX));
    ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
    Camera camera = Camera::Open(*world_, c.camera);
    ASSERT_EQ(camera.SetEnum("PixelFormat", c.format), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetInt("Width", c.width), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetInt("Height", c.height), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetInt("OffsetX", c.offsetX), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetInt("OffsetY", c.offsetY), OXEL_RETURN_CODE_SUCCESS);
    UseSoftwareTrigger(camera);
    camera.AnnounceAndQueue(4);
    camera.StartAcquisition();

    const uint64_t format =
        std::string(c.format) == "BGR8" ? OXEL_SIM_PIXEL_FORMAT_BGR8 : OXEL_SIM_PIXEL_FORMAT_MONO8;
    for (uint64_t n = 0; n < 2; ++n) {
      ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
      OXEL_BUFFER buffer = nullptr;
      ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(FrameId(buffer), OXEL_SIM_FIRST_FRAME_ID + n);
      uint64_t delivered = 0;
      EXPECT_EQ(OXEL_Buffer_GetPixelFormat(buffer, &delivered), OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(delivered, format);
      size_t width = 0, xOffset = 0;
      OXEL_Buffer_GetWidth(buffer, &width);
      OXEL_Buffer_GetXOffset(buffer, &xOffset);
      EXPECT_EQ(width, static_cast<size_t>(c.width));
      EXPECT_EQ(xOffset, static_cast<size_t>(c.offsetX));
      OXEL_BOOL8 incomplete = 1;
      OXEL_Buffer_GetIsIncomplete(buffer, &incomplete);
      EXPECT_EQ(incomplete, 0);
      EXPECT_EQ(WrongPixels(buffer, format), 0u);
      ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_SUCCESS);
    }
    uint64_t last = 0;
    EXPECT_EQ(OxelSim_GetLastFrameId(c.camera, &last), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(last, OXEL_SIM_FIRST_FRAME_ID + 1);
    camera.Close();
  }
}

TEST_F(Acquisition, Line0EdgesTriggerOnTheConfiguredActivation) {
  for (const char* activation : {"RisingEdge", "FallingEdge"}) {
    SCOPED_TRACE(activation);
    Camera camera = Camera::Open(*world_, kMonoId);
    ASSERT_EQ(camera.SetEnum("TriggerSelector", "ExposureStart"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerSource", "Line0"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerActivation", activation), OXEL_RETURN_CODE_SUCCESS);
    camera.AnnounceAndQueue(4);
    camera.StartAcquisition();

    // A software trigger goes nowhere while the source is line 0.
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    OXEL_BUFFER buffer = nullptr;
    EXPECT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_TIMEOUT);

    ASSERT_EQ(OxelSim_PulseLine0(kMonoId), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(WrongPixels(buffer, OXEL_SIM_PIXEL_FORMAT_MONO8), 0u);
    // One pulse, one frame.
    EXPECT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_TIMEOUT);
    camera.Close();
    ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
  }
}

TEST_F(Acquisition, FramesComeOnlyWhileCameraAndStreamBothAcquire) {
  Camera camera = Camera::Open(*world_, kColourId);
  UseSoftwareTrigger(camera);
  camera.AnnounceAndQueue(3);
  OXEL_BUFFER buffer = nullptr;

  // Stream started, camera not: the trigger is ignored.
  ASSERT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                             OXEL_INFINITE_NUMBER),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_TIMEOUT);

  ASSERT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_SUCCESS);

  ASSERT_EQ(camera.Execute("AcquisitionStop"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_TIMEOUT);

  // Camera acquiring, stream stopped: a wait fails at once and says why.
  ASSERT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Wait(camera, 3000, &buffer), OXEL_RETURN_CODE_NOT_AVAILABLE);
  EXPECT_NE(TakeLastError().text.find("not started"), std::string::npos);
}

TEST_F(Acquisition, LostFramesAreUnderrunsOrDropsAndStillTakeTheirIds) {
  Camera camera = Camera::Open(*world_, kColourId);
  UseSoftwareTrigger(camera);
  std::vector<OXEL_BUFFER> buffers = camera.AnnounceAndQueue(3);
  camera.StartAcquisition();
  ASSERT_EQ(OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);  // no buffer queued
  uint64_t underruns = 0;
  ASSERT_EQ(OXEL_DataStream_GetNumUnderruns(camera.stream, &underruns), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(underruns, 1u);

  ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffers[0]), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_DropFrames(kColourId, 1), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);  // dropped
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  OXEL_BUFFER buffer = nullptr;
  ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(buffer, buffers[0]);
  EXPECT_EQ(FrameId(buffer), OXEL_SIM_FIRST_FRAME_ID + 2);
  ASSERT_EQ(OXEL_DataStream_GetNumUnderruns(camera.stream, &underruns), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(underruns, 1u);
  uint64_t delivered = 0;
  ASSERT_EQ(OXEL_DataStream_GetNumBuffersDelivered(camera.stream, &delivered),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(delivered, 1u);
}

TEST_F(Acquisition, WaitsEndByTimeoutKillOrClose) {
  Camera camera = Camera::Open(*world_, kColourId);
  UseSoftwareTrigger(camera);
  camera.AnnounceAndQueue(3);
  camera.StartAcquisition();
  OXEL_BUFFER buffer = nullptr;

  EXPECT_EQ(Wait(camera, 20, &buffer), OXEL_RETURN_CODE_TIMEOUT);
  EXPECT_NE(TakeLastError().text.find("within 20 ms"), std::string::npos);

  // A kill with nobody waiting ends the next wait.
  ASSERT_EQ(OXEL_DataStream_KillWait(camera.stream), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_ABORTED);

  // A waiter blocked without a time limit is freed by a kill from another thread.
  auto blocked = std::async(std::launch::async, [&] {
    OXEL_BUFFER got = nullptr;
    return Wait(camera, OXEL_INFINITE_NUMBER, &got);
  });
  while (blocked.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    ASSERT_EQ(OXEL_DataStream_KillWait(camera.stream), OXEL_RETURN_CODE_SUCCESS);
  }
  EXPECT_EQ(blocked.get(), OXEL_RETURN_CODE_ABORTED);
  // Kills sent before the waiter blocked may leave one pending: clear it.
  Wait(camera, 0, &buffer);

  // Closing the device frees a waiter too: one that was blocked ends with
  // ABORTED, one that came too late finds the stream handle gone.
  auto closing = std::async(std::launch::async, [&] {
    OXEL_BUFFER got = nullptr;
    return Wait(camera, OXEL_INFINITE_NUMBER, &got);
  });
  camera.Close();
  const OXEL_RETURN_CODE ended = closing.get();
  EXPECT_TRUE(ended == OXEL_RETURN_CODE_ABORTED || ended == OXEL_RETURN_CODE_INVALID_HANDLE)
      << ended;
}

TEST_F(Acquisition, FlushAndRevokeFollowTheQueues) {
  Camera camera = Camera::Open(*world_, kColourId);
  UseSoftwareTrigger(camera);
  std::vector<OXEL_BUFFER> buffers = camera.AnnounceAndQueue(3);
  camera.StartAcquisition();

  // A buffer still queued cannot be revoked while the stream acquires.
  EXPECT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, buffers[0], nullptr),
            OXEL_RETURN_CODE_BAD_ACCESS);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersQueued, camera), 3u);

  ASSERT_EQ(OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_INPUT_TO_OUTPUT),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersQueued, camera), 0u);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersAwaitDelivery, camera), 3u);
  OXEL_BUFFER buffer = nullptr;
  ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(buffer, buffers[0]);
  OXEL_BOOL8 incomplete = 0;
  OXEL_Buffer_GetIsIncomplete(buffer, &incomplete);
  EXPECT_NE(incomplete, 0);  // flushed, never filled

  ASSERT_EQ(OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_OUTPUT),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersAwaitDelivery, camera), 0u);
  ASSERT_EQ(OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_UNQUEUED_TO_INPUT),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersQueued, camera), 3u);

  // The oldest queued buffer is filled first.
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(Wait(camera, 0, &buffer), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(buffer, buffers[0]);

  // A buffer held by the user can be revoked; an unknown one cannot.
  void* userPtr = &camera;
  ASSERT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, buffer, &userPtr),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(userPtr, nullptr);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersAnnounced, camera), 2u);
  EXPECT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, buffer, nullptr),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  size_t size = 0;
  EXPECT_EQ(OXEL_Buffer_GetSize(buffer, &size), OXEL_RETURN_CODE_INVALID_HANDLE);

  // Stopped, queued buffers can be revoked too.
  ASSERT_EQ(OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, buffers[1], nullptr),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Count(OXEL_DataStream_GetNumBuffersQueued, camera), 1u);
}

TEST_F(Acquisition, StartNeedsTheMinimumBufferCountAndAnsweringCamera) {
  Camera camera = Camera::Open(*world_, kMonoId);
  size_t minimum = 0;
  ASSERT_EQ(OXEL_DataStream_GetNumBuffersAnnouncedMinRequired(camera.stream, &minimum),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(minimum, 4u);
  camera.AnnounceAndQueue(minimum - 1);
  EXPECT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                             OXEL_INFINITE_NUMBER),
            OXEL_RETURN_CODE_NOT_AVAILABLE);
  EXPECT_NE(TakeLastError().text.find("at least 4"), std::string::npos);
  camera.AnnounceAndQueue(1);

  // An unplugged camera neither starts nor answers nor sends frames.
  ASSERT_EQ(OxelSim_UnplugCamera(kMonoId), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                             OXEL_INFINITE_NUMBER),
            OXEL_RETURN_CODE_ERROR);
  EXPECT_NE(TakeLastError().text.find("unplugged"), std::string::npos);
  EXPECT_EQ(camera.SetInt("Width", 64), OXEL_RETURN_CODE_ERROR);
  ASSERT_EQ(OxelSim_ReplugCamera(kMonoId), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_ERROR);
  EXPECT_NE(TakeLastError().text.find("open it anew"), std::string::npos);
  camera.Close();
}

}  // namespace
}  // namespace simtest
