// The Oxel C interface as every Oxel library must answer it, written once and
// run against the simulator and against the library over Aravis (with its
// fake camera). Where the two may differ, the test says why.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "oxel_library.h"
#include "oxel_sim.h"

namespace conformance {
namespace {

// The node of the given kind; fails the test when the cast is refused.
template <class Typed, class Cast>
Typed As(OXEL_NODE node, Cast cast) {
  Typed typed = nullptr;
  EXPECT_EQ(cast(node, &typed), OXEL_RETURN_CODE_SUCCESS) << LastErrorText();
  return typed;
}

OXEL_FLOAT_NODE FloatNode(const OpenedCamera& camera, const std::string& name) {
  return As<OXEL_FLOAT_NODE>(camera.Node(name), Oxel().OXEL_Node_ToFloatNode);
}

OXEL_NODE_ACCESS_STATUS Access(const OpenedCamera& camera, const std::string& name) {
  OXEL_NODE_ACCESS_STATUS access = OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED;
  EXPECT_EQ(Oxel().OXEL_Node_GetAccessStatus(camera.Node(name), &access), OXEL_RETURN_CODE_SUCCESS);
  return access;
}

// Announces and queues `count` buffers of the stream's payload size.
std::vector<OXEL_BUFFER> AnnounceAndQueue(const OpenedCamera& camera, size_t count) {
  size_t payload = 0;
  OXEL_BOOL8 defines = 0;
  EXPECT_EQ(Oxel().OXEL_DataStream_GetDefinesPayloadSize(camera.stream, &defines), 0);
  if (defines != 0) {
    EXPECT_EQ(Oxel().OXEL_DataStream_GetPayloadSize(camera.stream, &payload), 0);
  } else {
    payload = static_cast<size_t>(camera.Integer("PayloadSize"));
  }
  std::vector<OXEL_BUFFER> buffers(count);
  for (size_t i = 0; i < count; ++i) {
    EXPECT_EQ(Oxel().OXEL_DataStream_AllocAndAnnounceBuffer(
                  camera.stream, payload, reinterpret_cast<void*>(i + 1), &buffers[i]),
              OXEL_RETURN_CODE_SUCCESS)
        << LastErrorText();
    EXPECT_EQ(Oxel().OXEL_DataStream_QueueBuffer(camera.stream, buffers[i]), 0) << LastErrorText();
  }
  return buffers;
}

size_t MinimumBuffers(const OpenedCamera& camera) {
  size_t minimum = 0;
  EXPECT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAnnouncedMinRequired(camera.stream, &minimum), 0);
  return std::max<size_t>(minimum, 2);
}

template <class T, class Query>
T BufferValue(OXEL_BUFFER buffer, Query query) {
  T value{};
  EXPECT_EQ(query(buffer, &value), OXEL_RETURN_CODE_SUCCESS) << LastErrorText();
  return value;
}

// A software trigger and the frame it brings.
OXEL_BUFFER TriggerAndWait(const OpenedCamera& camera) {
  EXPECT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS) << LastErrorText();
  OXEL_BUFFER buffer = nullptr;
  EXPECT_EQ(Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 3000, &buffer),
            OXEL_RETURN_CODE_SUCCESS)
      << LastErrorText();
  return buffer;
}

TEST(Conformance, TheLibraryCountsItsUsersAndKeepsEachThreadsLastError) {
  OXEL_BOOL8 initialized = 1;
  ASSERT_EQ(Oxel().OXEL_Library_IsInitialized(&initialized), 0);
  EXPECT_EQ(initialized, 0);
  size_t count = 0;
  EXPECT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAnnounced(nullptr, &count),
            OXEL_RETURN_CODE_NOT_INITIALIZED);

  ASSERT_EQ(Oxel().OXEL_Library_Initialize(), 0);
  ASSERT_EQ(Oxel().OXEL_Library_Initialize(), 0);
  ASSERT_EQ(Oxel().OXEL_Library_Close(), 0);
  ASSERT_EQ(Oxel().OXEL_Library_IsInitialized(&initialized), 0);
  EXPECT_EQ(initialized, 1) << "one Initialize is not matched by a Close yet";

  // A failure names itself in the calling thread's last error only.
  EXPECT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAnnounced(nullptr, &count),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  std::thread([] {
    int notAStream = 0;
    EXPECT_EQ(Oxel().OXEL_DataStream_KillWait(reinterpret_cast<OXEL_DATA_STREAM>(&notAStream)),
              OXEL_RETURN_CODE_INVALID_HANDLE);
    EXPECT_NE(LastErrorText().find("OXEL_DataStream_KillWait"), std::string::npos);
  }).join();
  OXEL_RETURN_CODE code = 0;
  size_t size = 0;
  ASSERT_EQ(Oxel().OXEL_Library_GetLastError(&code, nullptr, &size), 0);
  EXPECT_EQ(code, OXEL_RETURN_CODE_INVALID_HANDLE);
  std::string text(size, '\0');
  size_t tooSmall = 3;
  EXPECT_EQ(Oxel().OXEL_Library_GetLastError(&code, text.data(), &tooSmall),
            OXEL_RETURN_CODE_BUFFER_TOO_SMALL);
  EXPECT_EQ(tooSmall, size) << "a short buffer still learns the size it needs";
  EXPECT_NE(LastErrorText().find("OXEL_DataStream_GetNumBuffersAnnounced"), std::string::npos)
      << "reading the last error must not replace it";

  ASSERT_EQ(Oxel().OXEL_Library_Close(), 0);
  EXPECT_EQ(Oxel().OXEL_Library_Close(), OXEL_RETURN_CODE_NOT_INITIALIZED);
}

TEST(Conformance, DiscoveryListsAUsbCameraAndRefusesHandlesItDidNotGive) {
  OpenedCamera camera;
  EXPECT_FALSE(camera.id.empty());
  for (auto call :
       {Oxel().OXEL_DeviceDescriptor_GetModelName, Oxel().OXEL_DeviceDescriptor_GetDisplayName,
        Oxel().OXEL_DeviceDescriptor_GetSerialNumber}) {
    size_t size = 0;
    EXPECT_EQ(call(camera.descriptor, nullptr, &size), 0) << LastErrorText();
    EXPECT_GT(size, 1u);
  }
  // A descriptor opens one device at a time.
  OXEL_DEVICE again = nullptr;
  EXPECT_EQ(Oxel().OXEL_DeviceDescriptor_OpenDevice(camera.descriptor,
                                                    OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE, &again),
            OXEL_RETURN_CODE_BAD_ACCESS);
  OXEL_DEVICE_ACCESS_STATUS status = OXEL_DEVICE_ACCESS_STATUS_UNKNOWN;
  ASSERT_EQ(Oxel().OXEL_DeviceDescriptor_GetAccessStatus(camera.descriptor, &status), 0);
  EXPECT_EQ(status, OXEL_DEVICE_ACCESS_STATUS_OPEN_READ_WRITE);
  OXEL_BOOL8 openable = 1;
  ASSERT_EQ(Oxel().OXEL_DeviceDescriptor_IsOpenable(camera.descriptor,
                                                    OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE, &openable),
            0);
  EXPECT_EQ(openable, 0) << "a camera held open is not openable again";

  // Handles of another kind, or never given out, are refused, never used.
  size_t count = 0;
  EXPECT_EQ(
      Oxel().OXEL_Device_GetNumDataStreams(reinterpret_cast<OXEL_DEVICE>(camera.stream), &count),
      OXEL_RETURN_CODE_INVALID_HANDLE);
  int notAHandle = 0;
  EXPECT_EQ(
      Oxel().OXEL_Device_GetNumDataStreams(reinterpret_cast<OXEL_DEVICE>(&notAHandle), &count),
      OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_EQ(Oxel().OXEL_Device_GetNumDataStreams(camera.device, nullptr),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
  ASSERT_EQ(Oxel().OXEL_Device_GetNumDataStreams(camera.device, &count), 0);
  EXPECT_EQ(count, 1u);
  OXEL_DATA_STREAM_DESCRIPTOR missing = nullptr;
  EXPECT_EQ(Oxel().OXEL_Device_GetDataStreamDescriptor(camera.device, 1, &missing),
            OXEL_RETURN_CODE_OUT_OF_RANGE);
  OXEL_PRODUCER_LIBRARY producer = nullptr;
  const std::string nowhere = "/nonexistent/producer.cti";
  EXPECT_EQ(Oxel().OXEL_ProducerLibrary_Open(nowhere.c_str(), nowhere.size() + 1, &producer),
            OXEL_RETURN_CODE_CTI_LOADING_ERROR);
}

TEST(Conformance, EveryModuleCountsItsNodeMapsAndTheCameraHasOne) {
  OpenedCamera camera;
  OXEL_REMOTE_DEVICE remote = nullptr;
  ASSERT_EQ(Oxel().OXEL_Device_GetRemoteDevice(camera.device, &remote), 0);
  OXEL_MODULE modules[3] = {};
  ASSERT_EQ(Oxel().OXEL_RemoteDevice_ToModule(remote, &modules[0]), 0);
  ASSERT_EQ(Oxel().OXEL_Device_ToModule(camera.device, &modules[1]), 0);
  ASSERT_EQ(Oxel().OXEL_DataStream_ToModule(camera.stream, &modules[2]), 0);
  for (int k = 0; k < 3; ++k) {
    SCOPED_TRACE(k == 0 ? "remote device" : k == 1 ? "device" : "data stream");
    size_t count = 0;
    ASSERT_EQ(Oxel().OXEL_Module_GetNumNodeMaps(modules[k], &count), 0);
    // The camera's features are in the remote device's first map. The
    // transport modules differ: the simulator describes each in a small map
    // of its own, Aravis's transport layer has no GenICam description, so
    // the library over Aravis gives them none (the plug-in reads only the
    // camera's map).
    if (k == 0) {
      EXPECT_GE(count, 1u);
    } else {
      EXPECT_LE(count, IsSimulator() ? 1u : 0u);
    }
    OXEL_NODE_MAP beyond = nullptr;
    EXPECT_EQ(Oxel().OXEL_Module_GetNodeMap(modules[k], count, &beyond),
              OXEL_RETURN_CODE_OUT_OF_RANGE);
  }
}

TEST(Conformance, IntegerFeaturesKeepTheirRangeAndIncrement) {
  OpenedCamera camera;
  OXEL_INTEGER_NODE width =
      As<OXEL_INTEGER_NODE>(camera.Node("Width"), Oxel().OXEL_Node_ToIntegerNode);
  int64_t minimum = 0, maximum = 0, increment = 0;
  ASSERT_EQ(Oxel().OXEL_IntegerNode_GetMinimum(width, &minimum), 0);
  ASSERT_EQ(Oxel().OXEL_IntegerNode_GetMaximum(width, &maximum), 0);
  ASSERT_EQ(Oxel().OXEL_IntegerNode_GetIncrement(width, &increment), 0);
  EXPECT_LT(minimum, maximum);
  EXPECT_GE(increment, 1);
  EXPECT_EQ(maximum, camera.Integer("WidthMax"));

  EXPECT_EQ(Oxel().OXEL_IntegerNode_SetValue(width, 100000), OXEL_RETURN_CODE_OUT_OF_RANGE);
  EXPECT_NE(LastErrorText().find("Width"), std::string::npos);
  EXPECT_EQ(Oxel().OXEL_IntegerNode_SetValue(width, minimum - increment),
            OXEL_RETURN_CODE_OUT_OF_RANGE);
  if (increment > 1) {
    EXPECT_EQ(Oxel().OXEL_IntegerNode_SetValue(width, minimum + 1), OXEL_RETURN_CODE_OUT_OF_RANGE);
  }
  EXPECT_EQ(camera.Integer("Width"), maximum) << "a refused write changes nothing";
  const int64_t half = minimum + (maximum - minimum) / 2 / increment * increment;
  ASSERT_EQ(Oxel().OXEL_IntegerNode_SetValue(width, half), 0) << LastErrorText();
  EXPECT_EQ(camera.Integer("Width"), half);

  // The payload follows the geometry; it is the camera's to compute.
  const int64_t payload = camera.Integer("PayloadSize");
  EXPECT_EQ(payload, half * camera.Integer("Height"));
  EXPECT_EQ(camera.SetInteger("PayloadSize", payload), OXEL_RETURN_CODE_BAD_ACCESS);
}

TEST(Conformance, LockedFeaturesReadButRefuseWritesUntilUnlocked) {
  OpenedCamera camera;
  ASSERT_EQ(Access(camera, "Width"), OXEL_NODE_ACCESS_STATUS_READ_WRITE);
  ASSERT_EQ(camera.SetInteger("TLParamsLocked", 1), 0) << LastErrorText();
  EXPECT_EQ(Access(camera, "Width"), OXEL_NODE_ACCESS_STATUS_READ_ONLY);
  const int64_t width = camera.Integer("Width");
  EXPECT_EQ(camera.SetInteger("Width", camera.Integer("Width") - 8), OXEL_RETURN_CODE_BAD_ACCESS);
  EXPECT_EQ(camera.Integer("Width"), width);
  ASSERT_EQ(camera.SetInteger("TLParamsLocked", 0), 0);
  EXPECT_EQ(Access(camera, "Width"), OXEL_NODE_ACCESS_STATUS_READ_WRITE);
  EXPECT_EQ(camera.SetInteger("Width", camera.Integer("Width") - 8 * 4), 0) << LastErrorText();
}

TEST(Conformance, FloatEnumerationCommandAndStringFeaturesAnswerByKind) {
  OpenedCamera camera;
  OXEL_FLOAT_NODE exposure = FloatNode(camera, "ExposureTime");
  double minimum = 0, maximum = 0, value = 0;
  ASSERT_EQ(Oxel().OXEL_FloatNode_GetMinimum(exposure, &minimum), 0);
  ASSERT_EQ(Oxel().OXEL_FloatNode_GetMaximum(exposure, &maximum), 0);
  EXPECT_EQ(Oxel().OXEL_FloatNode_SetValue(exposure, maximum * 2), OXEL_RETURN_CODE_OUT_OF_RANGE);
  ASSERT_EQ(Oxel().OXEL_FloatNode_SetValue(exposure, 1000.0), 0) << LastErrorText();
  ASSERT_EQ(Oxel().OXEL_FloatNode_GetValue(exposure, OXEL_NODE_CACHE_POLICY_BYPASS, &value), 0);
  EXPECT_NEAR(value, 1000.0, 1.0);
  EXPECT_EQ(Oxel().OXEL_FloatNode_GetValue(exposure, 7, &value), OXEL_RETURN_CODE_INVALID_ARGUMENT);

  // Casts to another kind are refused; typed calls given another kind too.
  OXEL_INTEGER_NODE notInteger = nullptr;
  EXPECT_EQ(Oxel().OXEL_Node_ToIntegerNode(camera.Node("ExposureTime"), &notInteger),
            OXEL_RETURN_CODE_INVALID_CAST);
  int64_t integer = 0;
  EXPECT_EQ(Oxel().OXEL_IntegerNode_GetValue(reinterpret_cast<OXEL_INTEGER_NODE>(exposure),
                                             OXEL_NODE_CACHE_POLICY_USE_CACHE, &integer),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  OXEL_NODE none = nullptr;
  const std::string unknown = "NoSuchFeature";
  EXPECT_EQ(
      Oxel().OXEL_NodeMap_FindNode(camera.nodeMap, unknown.c_str(), unknown.size() + 1, &none),
      OXEL_RETURN_CODE_NOT_FOUND);

  OXEL_ENUMERATION_NODE format =
      As<OXEL_ENUMERATION_NODE>(camera.Node("PixelFormat"), Oxel().OXEL_Node_ToEnumerationNode);
  size_t entries = 0;
  ASSERT_EQ(Oxel().OXEL_EnumerationNode_GetNumEntries(format, &entries), 0);
  std::vector<std::string> symbols;
  for (size_t i = 0; i < entries; ++i) {
    OXEL_ENUMERATION_ENTRY_NODE entry = nullptr;
    ASSERT_EQ(Oxel().OXEL_EnumerationNode_GetEntry(format, i, &entry), 0);
    symbols.push_back(Text([&](char* text, size_t* size) {
      return Oxel().OXEL_EnumerationEntryNode_GetSymbolicValue(entry, text, size);
    }));
    if (symbols.back() == "Mono8") {
      int64_t code = 0;
      ASSERT_EQ(Oxel().OXEL_EnumerationEntryNode_GetValue(entry, &code), 0);
      EXPECT_EQ(code, 0x01080001);
    }
  }
  EXPECT_NE(std::find(symbols.begin(), symbols.end(), "Mono8"), symbols.end());
  EXPECT_EQ(camera.SetEntry("PixelFormat", "NoSuchFormat"), OXEL_RETURN_CODE_NOT_FOUND);
  OXEL_ENUMERATION_ENTRY_NODE current = nullptr;
  ASSERT_EQ(Oxel().OXEL_EnumerationNode_GetCurrentEntry(format, OXEL_NODE_CACHE_POLICY_USE_CACHE,
                                                        &current),
            0);
  EXPECT_EQ(Text([&](char* text, size_t* size) {
              return Oxel().OXEL_EnumerationEntryNode_GetSymbolicValue(current, text, size);
            }),
            "Mono8");
  EXPECT_EQ(Oxel().OXEL_EnumerationNode_GetEntry(format, entries, &current),
            OXEL_RETURN_CODE_OUT_OF_RANGE);

  OXEL_NODE_TYPE type = OXEL_NODE_TYPE_INTEGER;
  ASSERT_EQ(Oxel().OXEL_Node_GetType(camera.Node("AcquisitionStart"), &type), 0);
  EXPECT_EQ(type, OXEL_NODE_TYPE_COMMAND);
  ASSERT_EQ(Oxel().OXEL_Node_GetType(camera.Node("Root"), &type), 0);
  EXPECT_EQ(type, OXEL_NODE_TYPE_CATEGORY);

  OXEL_STRING_NODE name =
      As<OXEL_STRING_NODE>(camera.Node("DeviceUserID"), Oxel().OXEL_Node_ToStringNode);
  const std::string given = "bench-7";
  ASSERT_EQ(Oxel().OXEL_StringNode_SetValue(name, given.c_str(), given.size() + 1), 0)
      << LastErrorText();
  EXPECT_EQ(Text([&](char* text, size_t* size) {
              return Oxel().OXEL_StringNode_GetValue(name, OXEL_NODE_CACHE_POLICY_BYPASS, text,
                                                     size);
            }),
            given);
  OXEL_STRING_NODE model =
      As<OXEL_STRING_NODE>(camera.Node("DeviceModelName"), Oxel().OXEL_Node_ToStringNode);
  EXPECT_EQ(Oxel().OXEL_StringNode_SetValue(model, given.c_str(), given.size() + 1),
            OXEL_RETURN_CODE_BAD_ACCESS);
}

TEST(Conformance, BuffersMoveThroughAnnounceQueueWaitAndRevokeInOrder) {
  OpenedCamera camera;
  OXEL_BUFFER buffer = nullptr;
  EXPECT_EQ(Oxel().OXEL_DataStream_AllocAndAnnounceBuffer(camera.stream, 0, nullptr, &buffer),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
  // Too few buffers refuse to start; an idle stream has nothing to wait for.
  std::vector<OXEL_BUFFER> buffers = AnnounceAndQueue(camera, 1);
  EXPECT_EQ(Oxel().OXEL_DataStream_StartAcquisition(
                camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER),
            OXEL_RETURN_CODE_NOT_AVAILABLE);
  EXPECT_EQ(Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 10, &buffer),
            OXEL_RETURN_CODE_NOT_AVAILABLE);
  EXPECT_EQ(Oxel().OXEL_DataStream_QueueBuffer(camera.stream, buffers[0]),
            OXEL_RETURN_CODE_INVALID_ARGUMENT)
      << "a queued buffer cannot be queued again";
  const std::vector<OXEL_BUFFER> more = AnnounceAndQueue(camera, MinimumBuffers(camera));
  buffers.insert(buffers.end(), more.begin(), more.end());
  size_t count = 0;
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAnnounced(camera.stream, &count), 0);
  EXPECT_EQ(count, buffers.size());
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersQueued(camera.stream, &count), 0);
  EXPECT_EQ(count, buffers.size());

  camera.StartTriggered();
  ASSERT_EQ(Oxel().OXEL_DataStream_StartAcquisition(
                camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER),
            0)
      << LastErrorText();
  OXEL_BOOL8 grabbing = 0;
  ASSERT_EQ(Oxel().OXEL_DataStream_GetIsGrabbing(camera.stream, &grabbing), 0);
  EXPECT_EQ(grabbing, 1);
  EXPECT_EQ(Oxel().OXEL_DataStream_StartAcquisition(camera.stream,
                                                    OXEL_ACQUISITION_START_MODE_DEFAULT, 1),
            OXEL_RETURN_CODE_BAD_ACCESS);
  EXPECT_EQ(Oxel().OXEL_DataStream_RevokeBuffer(camera.stream, buffers[1], nullptr),
            OXEL_RETURN_CODE_BAD_ACCESS)
      << "a buffer waiting to be filled cannot be revoked while grabbing";

  OXEL_BUFFER filled = TriggerAndWait(camera);
  ASSERT_NE(filled, nullptr);
  EXPECT_EQ(BufferValue<OXEL_BOOL8>(filled, Oxel().OXEL_Buffer_GetIsIncomplete), 0);
  uint64_t delivered = 0;
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersDelivered(camera.stream, &delivered), 0);
  EXPECT_EQ(delivered, 1u);
  ASSERT_EQ(Oxel().OXEL_DataStream_QueueBuffer(camera.stream, filled), 0) << LastErrorText();

  ASSERT_EQ(
      Oxel().OXEL_DataStream_StopAcquisition(camera.stream, OXEL_ACQUISITION_STOP_MODE_DEFAULT), 0);
  camera.StopCamera();
  ASSERT_EQ(Oxel().OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_ALL),
            0);
  for (size_t i = 0; i < buffers.size(); ++i) {
    void* user = nullptr;
    ASSERT_EQ(Oxel().OXEL_DataStream_RevokeBuffer(camera.stream, buffers[i], &user), 0)
        << LastErrorText();
    EXPECT_EQ(user, i == 0 ? reinterpret_cast<void*>(1) : reinterpret_cast<void*>(i));
  }
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAnnounced(camera.stream, &count), 0);
  EXPECT_EQ(count, 0u);
  size_t size = 0;
  EXPECT_EQ(Oxel().OXEL_Buffer_GetSize(buffers[0], &size), OXEL_RETURN_CODE_INVALID_HANDLE)
      << "a revoked buffer's handle is dead";
}

TEST(Conformance, TriggeredFramesCarryTheirGeometryRisingIdsAndTheTestPicture) {
  OpenedCamera camera;
  const int64_t width = camera.Integer("WidthMax") / 2 / 8 * 8;
  const int64_t height = camera.Integer("HeightMax") / 4 / 2 * 2;
  ASSERT_EQ(camera.SetInteger("Width", width), 0) << LastErrorText();
  ASSERT_EQ(camera.SetInteger("Height", height), 0);
  ASSERT_EQ(camera.SetInteger("OffsetX", 16), 0) << LastErrorText();
  ASSERT_EQ(camera.SetInteger("OffsetY", 4), 0);
  AnnounceAndQueue(camera, MinimumBuffers(camera));
  camera.StartTriggered();
  ASSERT_EQ(Oxel().OXEL_DataStream_StartAcquisition(
                camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER),
            0);
  uint64_t previousId = 0;
  for (int frame = 0; frame < 5; ++frame) {
    OXEL_BUFFER buffer = TriggerAndWait(camera);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(BufferValue<size_t>(buffer, Oxel().OXEL_Buffer_GetWidth), size_t(width));
    EXPECT_EQ(BufferValue<size_t>(buffer, Oxel().OXEL_Buffer_GetHeight), size_t(height));
    EXPECT_EQ(BufferValue<size_t>(buffer, Oxel().OXEL_Buffer_GetXOffset), 16u);
    EXPECT_EQ(BufferValue<size_t>(buffer, Oxel().OXEL_Buffer_GetYOffset), 4u);
    EXPECT_EQ(BufferValue<uint64_t>(buffer, Oxel().OXEL_Buffer_GetPixelFormat), 0x01080001u);
    EXPECT_GT(BufferValue<uint64_t>(buffer, Oxel().OXEL_Buffer_GetTimestampNs), 0u);
    const uint64_t id = BufferValue<uint64_t>(buffer, Oxel().OXEL_Buffer_GetFrameID);
    if (frame > 0) {
      EXPECT_GT(id, previousId);
    }
    previousId = id;
    // The frame is the simulated cameras' picture, at the camera's offset.
    const auto* pixels =
        static_cast<const uint8_t*>(BufferValue<void*>(buffer, Oxel().OXEL_Buffer_GetBasePtr));
    size_t wrong = 0;
    for (int64_t y = 0; y < height; y += 7) {
      for (int64_t x = 0; x < width; x += 13) {
        const uint8_t expected = OxelSim_PatternMono8(uint32_t(x + 16), uint32_t(y + 4), id);
        if (pixels[y * width + x] != expected) ++wrong;
      }
    }
    EXPECT_EQ(wrong, 0u) << "frame " << id;
    ASSERT_EQ(Oxel().OXEL_DataStream_QueueBuffer(camera.stream, buffer), 0);
  }
}

TEST(Conformance, WaitsEndByTimeOutAndByKillWaitWhetherOrNotOneIsWaiting) {
  OpenedCamera camera;
  AnnounceAndQueue(camera, MinimumBuffers(camera));
  camera.StartTriggered();
  ASSERT_EQ(Oxel().OXEL_DataStream_StartAcquisition(
                camera.stream, OXEL_ACQUISITION_START_MODE_DEFAULT, OXEL_INFINITE_NUMBER),
            0);
  OXEL_BUFFER buffer = nullptr;
  // No trigger, no frame.
  EXPECT_EQ(Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 150, &buffer),
            OXEL_RETURN_CODE_TIMEOUT);
  // A kill with nobody waiting ends the next wait.
  ASSERT_EQ(Oxel().OXEL_DataStream_KillWait(camera.stream), 0);
  EXPECT_EQ(Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 5000, &buffer),
            OXEL_RETURN_CODE_ABORTED);
  // A kill from another thread ends a long wait under way.
  auto waiting = std::async(std::launch::async, [&] {
    OXEL_BUFFER none = nullptr;
    return Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 60000, &none);
  });
  while (waiting.wait_for(std::chrono::milliseconds(20)) != std::future_status::ready) {
    ASSERT_EQ(Oxel().OXEL_DataStream_KillWait(camera.stream), 0);
  }
  EXPECT_EQ(waiting.get(), OXEL_RETURN_CODE_ABORTED);
  // And the stream still delivers afterwards.
  EXPECT_NE(TriggerAndWait(camera), nullptr);
}

TEST(Conformance, FlushMovesBuffersBetweenTheQueues) {
  OpenedCamera camera;
  const size_t total = MinimumBuffers(camera) + 1;
  AnnounceAndQueue(camera, total);
  size_t queued = 0, waiting = 0;
  ASSERT_EQ(
      Oxel().OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_INPUT_TO_OUTPUT), 0);
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersQueued(camera.stream, &queued), 0);
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAwaitDelivery(camera.stream, &waiting), 0);
  EXPECT_EQ(queued, 0u);
  EXPECT_EQ(waiting, total);
  // Flushed buffers are delivered without a frame.
  OXEL_BUFFER buffer = nullptr;
  ASSERT_EQ(Oxel().OXEL_DataStream_WaitForFinishedBuffer(camera.stream, 10, &buffer), 0);
  EXPECT_EQ(BufferValue<OXEL_BOOL8>(buffer, Oxel().OXEL_Buffer_GetIsIncomplete), 1);
  ASSERT_EQ(Oxel().OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_DISCARD_OUTPUT),
            0);
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersAwaitDelivery(camera.stream, &waiting), 0);
  EXPECT_EQ(waiting, 0u);
  ASSERT_EQ(Oxel().OXEL_DataStream_Flush(camera.stream, OXEL_DATA_STREAM_FLUSH_MODE_ALL_TO_INPUT),
            0);
  ASSERT_EQ(Oxel().OXEL_DataStream_GetNumBuffersQueued(camera.stream, &queued), 0);
  EXPECT_EQ(queued, total);
  EXPECT_EQ(Oxel().OXEL_DataStream_Flush(camera.stream, 99), OXEL_RETURN_CODE_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace conformance
