// Faults a test arms on the way from camera to host: late and incomplete
// frames, refused stream starts, and a camera unplugged under its stream.
#include <algorithm>
#include <cstring>
#include <functional>
#include <thread>

#include "sim_world.h"

namespace simtest {
namespace {

// Long enough for any frame the camera was asked for; the waits below end as
// soon as the frame is there.
constexpr uint64_t kFrameWaitMs = 5000;

struct Waited {
  OXEL_RETURN_CODE code;
  uint64_t frameId = 0;
  OXEL_BUFFER buffer = nullptr;
};

Waited WaitForFrame(const Camera& camera, uint64_t timeoutMs) {
  Waited waited{OXEL_DataStream_WaitForFinishedBuffer(camera.stream, timeoutMs, &waited.buffer)};
  if (waited.code == OXEL_RETURN_CODE_SUCCESS) {
    EXPECT_EQ(OXEL_Buffer_GetFrameID(waited.buffer, &waited.frameId), OXEL_RETURN_CODE_SUCCESS);
  }
  return waited;
}

class StreamFaults : public BundledWorld {
 protected:
  // The mono camera, software triggered, acquiring into `buffers` buffers.
  Camera Triggered(size_t buffers = 4) {
    Camera camera = Camera::Open(*world_, kMonoId);
    EXPECT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(camera.SetEnum("TriggerSource", "Software"), OXEL_RETURN_CODE_SUCCESS);
    camera.AnnounceAndQueue(buffers);
    camera.StartAcquisition();
    return camera;
  }
  static uint64_t NextFrameId() {
    uint64_t last = 0;
    return OxelSim_GetLastFrameId(kMonoId, &last) == OXEL_RETURN_CODE_SUCCESS
               ? last + 1
               : OXEL_SIM_FIRST_FRAME_ID;
  }
  static void StartStream(const Camera& camera) {
    ASSERT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                               OXEL_INFINITE_NUMBER),
              OXEL_RETURN_CODE_SUCCESS);
  }
  static void StopStream(const Camera& camera) {
    ASSERT_EQ(OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT),
              OXEL_RETURN_CODE_SUCCESS);
  }
};

TEST_F(StreamFaults, LateFramesArriveAfterLaterOnesOrNotAtAllOnceTheStreamStopped) {
  Camera camera = Triggered();
  const uint64_t first = NextFrameId();
  ASSERT_EQ(OxelSim_DelayFrames(kMonoId, 1, 300), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(WaitForFrame(camera, 0).code, OXEL_RETURN_CODE_TIMEOUT) << "the late frame is early";

  // The camera is free once the late frame is read out: the next frame
  // overtakes it, and the late one still lands in the output queue.
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  Waited waited = WaitForFrame(camera, kFrameWaitMs);
  ASSERT_EQ(waited.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(waited.frameId, first + 1);
  ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, waited.buffer), OXEL_RETURN_CODE_SUCCESS);
  waited = WaitForFrame(camera, kFrameWaitMs);
  ASSERT_EQ(waited.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(waited.frameId, first);
  EXPECT_EQ(WrongPixels(waited.buffer, OXEL_SIM_PIXEL_FORMAT_MONO8), 0u);
  ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, waited.buffer), OXEL_RETURN_CODE_SUCCESS);

  // Every frame late until cleared; a stream stopped meanwhile never gets
  // them, even when it is started again before they would have arrived.
  ASSERT_EQ(OxelSim_DelayFrames(kMonoId, -1, 300), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  StopStream(camera);
  StartStream(camera);
  ASSERT_EQ(OxelSim_DelayFrames(kMonoId, 0, 0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  waited = WaitForFrame(camera, kFrameWaitMs);
  ASSERT_EQ(waited.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(waited.frameId, first + 3);
  EXPECT_EQ(WaitForFrame(camera, 1000).code, OXEL_RETURN_CODE_TIMEOUT)
      << "a frame of the stopped stream arrived";

  EXPECT_EQ(OxelSim_DelayFrames(kMonoId, -2, 10), OXEL_RETURN_CODE_INVALID_ARGUMENT);
  EXPECT_EQ(OxelSim_DelayFrames("no-such-camera", 1, 10), OXEL_RETURN_CODE_NOT_FOUND);
}

TEST_F(StreamFaults, IncompleteFramesHoldOnlyTheFirstPartOfTheirPayload) {
  Camera camera = Camera::Open(*world_, kMonoId);
  ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
  const size_t payload = static_cast<size_t>(camera.Int("PayloadSize"));
  constexpr uint8_t kUntouched = 0xA5;
  for (OXEL_BUFFER buffer : camera.AnnounceAndQueue(4)) {
    void* base = nullptr;
    ASSERT_EQ(OXEL_Buffer_GetBasePtr(buffer, &base), OXEL_RETURN_CODE_SUCCESS);
    std::memset(base, kUntouched, payload);
  }
  camera.StartAcquisition();
  const uint64_t first = NextFrameId();
  ASSERT_EQ(OxelSim_IncompleteFrames(kMonoId, 1), OXEL_RETURN_CODE_SUCCESS);
  for (uint64_t k = 0; k < 2; ++k) {
    SCOPED_TRACE(k);
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    const Waited waited = WaitForFrame(camera, kFrameWaitMs);
    ASSERT_EQ(waited.code, OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(waited.frameId, first + k);
    OXEL_BOOL8 incomplete = 2;
    ASSERT_EQ(OXEL_Buffer_GetIsIncomplete(waited.buffer, &incomplete), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(incomplete, k == 0 ? 1 : 0);
    void* base = nullptr;
    ASSERT_EQ(OXEL_Buffer_GetBasePtr(waited.buffer, &base), OXEL_RETURN_CODE_SUCCESS);
    const auto* bytes = static_cast<const uint8_t*>(base);
    const int64_t width = camera.Int("Width");
    size_t written = 0;
    for (size_t i = 0; i < payload; ++i) {
      const auto x = static_cast<uint32_t>(i % width);
      const auto y = static_cast<uint32_t>(i / width);
      if (bytes[i] != OxelSim_PatternMono8(x, y, waited.frameId)) break;
      ++written;
    }
    const bool restUntouched =
        std::all_of(bytes + written, bytes + payload, [](uint8_t b) { return b == kUntouched; });
    EXPECT_EQ(written, k == 0 ? payload / 2 : payload);
    EXPECT_TRUE(restUntouched);
  }
}

TEST_F(StreamFaults, RefusedStreamStartsFailWithTheArmedCodeAndLeaveTheStreamStopped) {
  Camera camera = Camera::Open(*world_, kMonoId);
  camera.AnnounceAndQueue(4);
  ASSERT_EQ(OxelSim_FailStreamStarts(kMonoId, 2, OXEL_RETURN_CODE_BAD_ACCESS),
            OXEL_RETURN_CODE_SUCCESS);
  for (int k = 0; k < 3; ++k) {
    SCOPED_TRACE(k);
    const OXEL_RETURN_CODE code = OXEL_DataStream_StartAcquisition(
        camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER);
    OXEL_BOOL8 grabbing = 2;
    ASSERT_EQ(OXEL_DataStream_GetIsGrabbing(camera.stream, &grabbing), OXEL_RETURN_CODE_SUCCESS);
    if (k < 2) {
      EXPECT_EQ(code, OXEL_RETURN_CODE_BAD_ACCESS);
      EXPECT_NE(TakeLastError().text.find("OxelSim_FailStreamStarts"), std::string::npos);
      EXPECT_EQ(grabbing, 0);
    } else {
      EXPECT_EQ(code, OXEL_RETURN_CODE_SUCCESS);
      EXPECT_EQ(grabbing, 1);
    }
  }
  StopStream(camera);

  // Every start until cleared, and a reset clears it and the other faults.
  ASSERT_EQ(OxelSim_FailStreamStarts(kMonoId, -1, OXEL_RETURN_CODE_ERROR),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_DelayFrames(kMonoId, -1, 60000), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_IncompleteFrames(kMonoId, -1), OXEL_RETURN_CODE_SUCCESS);
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                               OXEL_INFINITE_NUMBER),
              OXEL_RETURN_CODE_ERROR);
  }
  ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
  camera.StartAcquisition();
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  const Waited waited = WaitForFrame(camera, kFrameWaitMs);
  ASSERT_EQ(waited.code, OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(waited.frameId, OXEL_SIM_FIRST_FRAME_ID);
  EXPECT_EQ(WrongPixels(waited.buffer, OXEL_SIM_PIXEL_FORMAT_MONO8), 0u);

  EXPECT_EQ(OxelSim_FailStreamStarts(kMonoId, 1, OXEL_RETURN_CODE_SUCCESS),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
}

TEST_F(StreamFaults, AnUnpluggedCamerasStreamFailsAsItsFeaturesDo) {
  Camera camera = Triggered();
  OXEL_BUFFER spare = nullptr;
  ASSERT_EQ(OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 64, nullptr, &spare),
            OXEL_RETURN_CODE_SUCCESS);
  // A wait in progress ends with the camera rather than its time-out.
  Waited during{OXEL_RETURN_CODE_SUCCESS};
  std::string duringText;
  std::thread waiter([&] {
    during = WaitForFrame(camera, OXEL_INFINITE_NUMBER);
    duringText = TakeLastError().text;
  });
  // The unplug may come before the wait starts; it fails the same way then.
  ASSERT_EQ(OxelSim_UnplugCamera(kMonoId), OXEL_RETURN_CODE_SUCCESS);
  waiter.join();
  EXPECT_EQ(during.code, OXEL_RETURN_CODE_ERROR);
  EXPECT_NE(duringText.find("it was unplugged"), std::string::npos) << duringText;

  EXPECT_EQ(camera.Execute("AcquisitionStop"), OXEL_RETURN_CODE_ERROR);
  const std::string featureText = TakeLastError().text;
  const std::string expected =
      "camera '" + std::string(kMonoId) + "' does not answer: it was unplugged";
  ASSERT_NE(featureText.find(expected), std::string::npos) << featureText;

  OXEL_BUFFER buffer = nullptr;
  const std::pair<const char*, std::function<OXEL_RETURN_CODE()>> refused[] = {
      {"WaitForFinishedBuffer",
       [&] { return OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 0, &buffer); }},
      {"StopAcquisition",
       [&] {
         return OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT);
       }},
      {"StartAcquisition",
       [&] {
         return OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                                 OXEL_INFINITE_NUMBER);
       }},
      {"QueueBuffer", [&] { return OXEL_DataStream_QueueBuffer(camera.stream, spare); }},
      {"AllocAndAnnounceBuffer",
       [&] { return OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 64, nullptr, &buffer); }},
  };
  for (const auto& [name, call] : refused) {
    SCOPED_TRACE(name);
    EXPECT_EQ(call(), OXEL_RETURN_CODE_ERROR);
    const std::string text = TakeLastError().text;
    EXPECT_NE(text.find(expected), std::string::npos) << text;
    EXPECT_NE(text.find(name), std::string::npos) << text;
  }

  // What frees the host's resources still works.
  EXPECT_EQ(OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(OXEL_DataStream_RevokeBuffer(camera.stream, spare, nullptr), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(OXEL_DataStream_Close(camera.stream), OXEL_RETURN_CODE_SUCCESS);
  camera.Close();
}

}  // namespace
}  // namespace simtest
