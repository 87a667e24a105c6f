// What a camera remembers and forgets: read-only openings, power cycles, its
// user-defined name, frame counts of a stream and short buffers; and a stream
// used from two threads at once.
#include <atomic>
#include <chrono>
#include <thread>

#include "sim_world.h"

namespace simtest {
namespace {

using CameraLife = BundledWorld;

TEST_F(CameraLife, ReadOnlyOpeningReadsButNeverWrites) {
  OXEL_DEVICE_DESCRIPTOR descriptor = world_->Descriptor(kMonoId);
  OXEL_DEVICE device = nullptr;
  ASSERT_EQ(
      OXEL_DeviceDescriptor_OpenDevice(descriptor, OXEL_DEVICE_ACCESS_TYPE_READ_ONLY, &device),
      OXEL_RETURN_CODE_SUCCESS);
  OXEL_DEVICE_ACCESS_STATUS status = 0;
  ASSERT_EQ(OXEL_DeviceDescriptor_GetAccessStatus(descriptor, &status), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(status, OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_ONLY);
  OXEL_BOOL8 openable = 1;
  EXPECT_EQ(OXEL_DeviceDescriptor_IsOpenable(descriptor, 7, &openable),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);

  Camera camera;
  camera.device = device;
  OXEL_REMOTE_DEVICE remote = nullptr;
  ASSERT_EQ(OXEL_Device_GetRemoteDevice(device, &remote), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_Module_GetNodeMap(reinterpret_cast<OXEL_MODULE>(remote), 0, &camera.features),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.Int("Width"), 1280);
  EXPECT_EQ(camera.SetInt("Width", 640), OXEL_RETURN_CODE_BAD_ACCESS);
  EXPECT_NE(TakeLastError().text.find("opened read-only"), std::string::npos);
  EXPECT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_BAD_ACCESS);
  camera.Close();
}

TEST_F(CameraLife, PowerCycleRestoresTheFileButKeepsTheUserDefinedName) {
  Camera camera = Camera::Open(*world_, kColourId);
  OXEL_STRING_NODE userId = nullptr;
  ASSERT_EQ(OXEL_Node_ToStringNode(camera.Node("DeviceUserID"), &userId), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_StringNode_SetValue(userId, "Right", 6), OXEL_RETURN_CODE_SUCCESS);
  const std::string tooLong(64, 'n');
  EXPECT_EQ(OXEL_StringNode_SetValue(userId, tooLong.c_str(), tooLong.size() + 1),
            OXEL_RETURN_CODE_OUT_OF_RANGE);
  ASSERT_EQ(camera.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Text([&](char* t, size_t* s) {
              return OXEL_DeviceDescriptor_GetUserDefinedName(world_->Descriptor(kColourId), t, s);
            }),
            "Right");

  ASSERT_EQ(OxelSim_UnplugCamera(kColourId), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OxelSim_ReplugCamera(kColourId), OXEL_RETURN_CODE_SUCCESS);
  camera.Close();  // the old opening is dead but can still be closed
  world_->UpdateDevices(nullptr, nullptr);
  Camera again = Camera::Open(*world_, kColourId);
  EXPECT_EQ(again.Int("Width"), 1936);
  OXEL_STRING_NODE again_userId = nullptr;
  ASSERT_EQ(OXEL_Node_ToStringNode(again.Node("DeviceUserID"), &again_userId),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(
      Text([&](char* t, size_t* s) { return OXEL_StringNode_GetValue(again_userId, 0, t, s); }),
      "Right");

  // A reset forgets the name too.
  again.Close();
  ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(Text([&](char* t, size_t* s) {
              return OXEL_DeviceDescriptor_GetUserDefinedName(world_->Descriptor(kColourId), t, s);
            }),
            "Left");
}

TEST_F(CameraLife, StreamsAndSingleFrameModeStopByThemselves) {
  Camera camera = Camera::Open(*world_, kMonoId);
  ASSERT_EQ(camera.SetInt("Height", 8), OXEL_RETURN_CODE_SUCCESS);
  camera.AnnounceAndQueue(4);
  ASSERT_EQ(camera.SetInt("TLParamsLocked", 1), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_DataStream_StartAcquisition(camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, 2),
            OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("AcquisitionStart"), OXEL_RETURN_CODE_SUCCESS);
  OXEL_BUFFER buffer = nullptr;
  for (int n = 0; n < 2; ++n) {
    ASSERT_EQ(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 5000, &buffer),
              OXEL_RETURN_CODE_SUCCESS);
  }
  // Two frames asked for, two delivered: the stream is no longer grabbing.
  OXEL_BOOL8 grabbing = 1;
  ASSERT_EQ(OXEL_DataStream_GetIsGrabbing(camera.stream, &grabbing), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(grabbing, 0);
  EXPECT_EQ(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 5000, &buffer),
            OXEL_RETURN_CODE_NOT_AVAILABLE);

  ASSERT_EQ(camera.Execute("AcquisitionStop"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetInt("TLParamsLocked", 0), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("AcquisitionMode", "SingleFrame"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("TriggerSelector", "FrameStart"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
  camera.StartAcquisition();
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
  uint64_t delivered = 0;
  ASSERT_EQ(OXEL_DataStream_GetNumBuffersDelivered(camera.stream, &delivered),
            OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(delivered, 3u);  // the second trigger came after the single frame
  // The single frame ended the camera's acquisition: the AOI is free again.
  EXPECT_EQ(camera.SetInt("TLParamsLocked", 0), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(camera.SetInt("Width", 640), OXEL_RETURN_CODE_SUCCESS);
}

TEST_F(CameraLife, ABufferSmallerThanTheFrameIsFilledAndMarkedIncomplete) {
  Camera camera = Camera::Open(*world_, kMonoId);
  OXEL_BUFFER buffer = nullptr;
  ASSERT_EQ(OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 0, nullptr, &buffer),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
  const size_t rows = 3;
  int user = 0;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 1280 * rows, &user, &buffer),
              OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_SUCCESS);
  }
  EXPECT_EQ(OXEL_DataStream_QueueBuffer(camera.stream, buffer), OXEL_RETURN_CODE_INVALID_ARGUMENT);
  camera.StartAcquisition();
  ASSERT_EQ(OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 5000, &buffer),
            OXEL_RETURN_CODE_SUCCESS);
  OXEL_BOOL8 incomplete = 0;
  ASSERT_EQ(OXEL_Buffer_GetIsIncomplete(buffer, &incomplete), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_NE(incomplete, 0);
  void* userPtr = nullptr;
  ASSERT_EQ(OXEL_Buffer_GetUserPtr(buffer, &userPtr), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(userPtr, &user);
  void* base = nullptr;
  uint64_t frameId = 0;
  ASSERT_EQ(OXEL_Buffer_GetBasePtr(buffer, &base), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_Buffer_GetFrameID(buffer, &frameId), OXEL_RETURN_CODE_SUCCESS);
  const auto* bytes = static_cast<const uint8_t*>(base);
  size_t wrong = 0;
  for (uint32_t y = 0; y < rows; ++y) {
    for (uint32_t x = 0; x < 1280; ++x) {
      wrong += bytes[y * 1280 + x] != OxelSim_PatternMono8(x, y, frameId);
    }
  }
  EXPECT_EQ(wrong, 0u);
}

TEST_F(CameraLife, AConsumerThreadAndAControllingThreadShareTheCamera) {
  Camera camera = Camera::Open(*world_, kMonoId);
  ASSERT_EQ(camera.SetInt("Height", 16), OXEL_RETURN_CODE_SUCCESS);
  camera.AnnounceAndQueue(4);
  camera.StartAcquisition();
  std::atomic<int> frames{0};
  std::atomic<bool> wrongFrame{false};
  std::thread consumer([&] {
    for (;;) {
      OXEL_BUFFER buffer = nullptr;
      const OXEL_RETURN_CODE code =
          OXEL_DataStream_WaitForFinishedBuffer(camera.stream, OXEL_INFINITE_NUMBER, &buffer);
      if (code != OXEL_RETURN_CODE_SUCCESS) return;
      if (WrongPixels(buffer, OXEL_SIM_PIXEL_FORMAT_MONO8) != 0) wrongFrame = true;
      ++frames;
      OXEL_DataStream_QueueBuffer(camera.stream, buffer);
    }
  });
  // Switch between free run and software triggers while frames flow.
  for (int round = 0; round < 20; ++round) {
    ASSERT_EQ(camera.SetEnum("TriggerMode", round % 2 == 0 ? "On" : "Off"),
              OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetFloat("ExposureTime", 100.0 + round), OXEL_RETURN_CODE_SUCCESS);
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (frames.load() < 10 && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::yield();
  }
  EXPECT_GE(frames.load(), 10);
  ASSERT_EQ(OXEL_DataStream_KillWait(camera.stream), OXEL_RETURN_CODE_SUCCESS);
  consumer.join();
  EXPECT_FALSE(wrongFrame.load());
}

}  // namespace
}  // namespace simtest
