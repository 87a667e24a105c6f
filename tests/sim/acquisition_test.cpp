// Frames and the data stream: what a frame holds, and how the stream refuses
// buffers and waits it cannot serve.
#include "sim_world.h"

namespace simtest {
namespace {

class Acquisition : public BundledWorld {
 protected:
  static void UseSoftwareTrigger(const Camera& camera) {
    ASSERT_EQ(camera.SetEnum("TriggerSelector", "ExposureStart"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerSource", "Software"), OXEL_RETURN_CODE_SUCCESS);
  }
  static void ExpectError(OXEL_RETURN_CODE code, OXEL_RETURN_CODE expected, const char* textPart) {
    EXPECT_EQ(code, expected);
    const std::string text = TakeLastError().text;
    EXPECT_NE(text.find(textPart), std::string::npos) << text;
  }
};

TEST_F(Acquisition, EveryPixelOfTheAoiHoldsThePatternInBothFormats) {
  struct Case {
    const char* camera;
    uint64_t format;
    int64_t offsetX, offsetY, width, height;
    int frames;
  };
  const Case cases[] = {
      {kColourId, OXEL_SIM_PIXEL_FORMAT_BGR8, 1904, 1210, 32, 6, 1},
      {kMonoId, OXEL_SIM_PIXEL_FORMAT_MONO8, 4, 2, 36, 4, 1},
      // The last digits of the frame number, through several tens.
      {kMonoId, OXEL_SIM_PIXEL_FORMAT_MONO8, 824, 652, 360, 232, 30},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.camera);
    Camera camera = Camera::Open(*world_, c.camera);
    ASSERT_EQ(
        camera.SetEnum("PixelFormat", c.format == OXEL_SIM_PIXEL_FORMAT_BGR8 ? "BGR8" : "Mono8"),
        OXEL_RETURN_CODE_SUCCESS);
    for (const auto& [name, value] : {std::pair{"OffsetX", c.offsetX},
                                      {"OffsetY", c.offsetY},
                                      {"Width", c.width},
                                      {"Height", c.height}}) {
      ASSERT_EQ(camera.SetInt(name, value), OXEL_RETURN_CODE_SUCCESS) << name;
    }
    UseSoftwareTrigger(camera);
    camera.AnnounceAndQueue(4);
    camera.StartAcquisition();
    for (int frame = 0; frame < c.frames; ++frame) {
      ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
      OXEL_BUFFER buffer = nullptr;
      ASSERT_EQ(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, kFrameWaitMs, &buffer),
                OXEL_RETURN_CODE_SUCCESS);
      uint64_t delivered = 0;
      size_t height = 0, yOffset = 0;
      ASSERT_EQ(OXEL_Buffer_GetPixelFormat(buffer, &delivered), OXEL_RETURN_CODE_SUCCESS);
      ASSERT_EQ(OXEL_Buffer_GetHeight(buffer, &height), OXEL_RETURN_CODE_SUCCESS);
      ASSERT_EQ(OXEL_Buffer_GetYOffset(buffer, &yOffset), OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(delivered, c.format);
      EXPECT_EQ(height, static_cast<size_t>(c.height));
      EXPECT_EQ(yOffset, static_cast<size_t>(c.offsetY));
      ASSERT_EQ(WrongPixels(buffer, c.format), 0u) << "frame " << frame;
      ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_SUCCESS);
    }
    camera.Close();
  }
}

TEST_F(Acquisition, TheStreamRefusesBadBuffersAndWaitsItCannotServe) {
  Camera camera = Camera::Open(*world_, kMonoId);
  UseSoftwareTrigger(camera);
  OXEL_BUFFER buffer = nullptr;
  ExpectError(OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 0, nullptr, &buffer),
              OXEL_RETURN_CODE_INVALID_ARGUMENT, "");
  std::vector<OXEL_BUFFER> buffers = camera.AnnounceAndQueue(3);
  ExpectError(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                               OXEL_INFINITE_NUMBER),
              OXEL_RETURN_CODE_NOT_AVAILABLE, "at least 4");
  ExpectError(OXEL_DataStream_QueueBuffer(camera.stream, buffers[0]),
              OXEL_RETURN_CODE_INVALID_ARGUMENT, "");
  buffers.push_back(camera.AnnounceAndQueue(1).front());
  camera.StartAcquisition();
  ExpectError(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 0, &buffer),
              OXEL_RETURN_CODE_TIMEOUT, "");

  // Queued buffers stay while the stream acquires; a revoked one is unknown.
  ExpectError(OXEL_DataStream_RevokeBuffer(camera.stream, buffers[0], nullptr),
              OXEL_RETURN_CODE_BAD_ACCESS, "");
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, kFrameWaitMs, &buffer),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, buffer, nullptr), OXEL_RETURN_CODE_SUCCESS);
  ExpectError(OXEL_DataStream_RevokeBuffer(camera.stream, buffer, nullptr),
              OXEL_RETURN_CODE_INVALID_HANDLE, "");
  ExpectError(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_INVALID_HANDLE,
              "");

  // Camera acquiring, stream stopped: a wait fails at once and says why.
  ASSERT_EQ(OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ExpectError(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 3000, &buffer),
              OXEL_RETURN_CODE_NOT_AVAILABLE, "not started");
}

}  // namespace
}  // namespace simtest
