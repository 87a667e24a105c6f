// Library start and stop, the last error of each thread, the text protocol,
// and handles that are null, stale or of the wrong kind.
#include <thread>

#include "sim_world.h"

namespace simtest {
namespace {

bool Initialized() {
  OXEL_BOOL8 initialized = 2;
  EXPECT_EQ(OXEL_Library_IsInitialized(&initialized), OXEL_RETURN_CODE_SUCCESS);
  return initialized != 0;
}

TEST(Library, StaysStartedUntilEveryStartIsClosed) {
  ASSERT_FALSE(Initialized());
  ASSERT_EQ(OXEL_Library_Initialize(), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_Library_Initialize(), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_TRUE(Initialized());
  ASSERT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_FALSE(Initialized());
  EXPECT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_NOT_INITIALIZED);
}

TEST(Library, CallsBeforeStartFailExceptSearchAndErrors) {
  ScopedSearchPath path(BundledProducerDir());
  ASSERT_FALSE(Initialized());
  EXPECT_EQ(OXEL_ProducerSearch_Refresh(), OXEL_RETURN_CODE_SUCCESS);
  size_t count = 0;
  EXPECT_EQ(OXEL_ProducerSearch_GetCount(&count), OXEL_RETURN_CODE_SUCCESS);
  EXPECT_EQ(count, 2u);
  const std::string file = BundledProducerDir() + "/oxel_u3v.cti";
  OXEL_PRODUCER_LIBRARY library = nullptr;
  EXPECT_EQ(OXEL_ProducerLibrary_Open(file.c_str(), file.size() + 1, &library),
            OXEL_RETURN_CODE_NOT_INITIALIZED);
  const LastError error = TakeLastError();
  EXPECT_EQ(error.code, OXEL_RETURN_CODE_NOT_INITIALIZED);
  EXPECT_NE(error.text.find("OXEL_ProducerLibrary_Open"), std::string::npos);
  size_t nodes = 0;
  EXPECT_EQ(OXEL_NodeMap_GetNumNodes(nullptr, &nodes), OXEL_RETURN_CODE_NOT_INITIALIZED);
}

// The size query and the fill are driven by every text the camera layer reads.
TEST(Library, ShortTextBuffersAreRefusedUntouchedWithTheSizeNeeded) {
  ScopedSearchPath path(BundledProducerDir());
  ASSERT_EQ(OXEL_ProducerSearch_Refresh(), OXEL_RETURN_CODE_SUCCESS);
  size_t size = 0;
  ASSERT_EQ(OXEL_ProducerSearch_GetPath(0, nullptr, &size), OXEL_RETURN_CODE_SUCCESS);
  std::string text(size, 'x');
  size_t shortSize = size - 1;
  EXPECT_EQ(OXEL_ProducerSearch_GetPath(0, text.data(), &shortSize),
            OXEL_RETURN_CODE_BUFFER_TOO_SMALL);
  EXPECT_EQ(shortSize, size);
  EXPECT_EQ(text, std::string(size, 'x'));
  EXPECT_NE(TakeLastError().text.find("buffer of " + std::to_string(size - 1) + " bytes"),
            std::string::npos);
  EXPECT_EQ(OXEL_ProducerSearch_GetPath(0, text.data(), nullptr),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
}

TEST(Library, LastErrorBelongsToTheFailingThreadAndSurvivesItsOwnQuery) {
  ASSERT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_NOT_INITIALIZED);
  std::thread([] {
    ASSERT_EQ(OXEL_Library_IsInitialized(nullptr), OXEL_RETURN_CODE_INVALID_ARGUMENT);
    EXPECT_EQ(TakeLastError().code, OXEL_RETURN_CODE_INVALID_ARGUMENT);
  }).join();
  EXPECT_EQ(TakeLastError().code, OXEL_RETURN_CODE_NOT_INITIALIZED);

  // A failed last-error query leaves the error it reports in place.
  OXEL_RETURN_CODE code = 0;
  char tiny[2];
  size_t tinySize = sizeof tiny;
  EXPECT_EQ(OXEL_Library_GetLastError(&code, tiny, &tinySize), OXEL_RETURN_CODE_BUFFER_TOO_SMALL);
  const LastError error = TakeLastError();
  EXPECT_EQ(error.code, OXEL_RETURN_CODE_NOT_INITIALIZED);
  EXPECT_EQ(tinySize, error.text.size() + 1);
}

TEST(Library, HandlesAreCheckedNeverTrusted) {
  ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
  auto world = std::make_unique<World>();
  Camera camera = Camera::Open(*world, kColourId);
  OXEL_NODE width = camera.Node("Width");
  OXEL_DATA_STREAM stream = camera.stream;
  OXEL_DEVICE device = camera.device;
  int notAHandle = 0;
  size_t count = 0;
  char name[64];
  size_t nameSize = sizeof name;

  EXPECT_EQ(OXEL_Device_GetNumDataStreams(reinterpret_cast<OXEL_DEVICE>(&notAHandle), &count),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_EQ(OXEL_Device_GetNumDataStreams(reinterpret_cast<OXEL_DEVICE>(stream), &count),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_NE(TakeLastError().text.find("is a data stream handle, not a device handle"),
            std::string::npos);
  EXPECT_EQ(OXEL_Device_GetNumDataStreams(nullptr, &count), OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_EQ(OXEL_Device_GetNumDataStreams(device, nullptr), OXEL_RETURN_CODE_INVALID_ARGUMENT);
  EXPECT_NE(TakeLastError().text.find("'count'"), std::string::npos);

  // Texts in must count their terminator.
  OXEL_NODE found = nullptr;
  EXPECT_EQ(OXEL_NodeMap_FindNode(camera.features, "Width", 5, &found),
            OXEL_RETURN_CODE_INVALID_ARGUMENT);
  EXPECT_NE(TakeLastError().text.find("the length plus 1"), std::string::npos);

  // Closing the device kills every handle below it.
  camera.Close();
  EXPECT_EQ(OXEL_Node_GetName(width, name, &nameSize), OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_EQ(OXEL_DataStream_GetNumBuffersAnnounced(stream, &count),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  EXPECT_EQ(OXEL_Device_Close(device), OXEL_RETURN_CODE_INVALID_HANDLE);

  // So does closing the library; its handles stay dead after a new start.
  OXEL_DEVICE_DESCRIPTOR descriptor = world->Descriptor(kColourId);
  world.reset();
  ASSERT_EQ(OXEL_Library_Initialize(), OXEL_RETURN_CODE_SUCCESS);
  OXEL_DEVICE_ACCESS_STATUS status = 0;
  EXPECT_EQ(OXEL_DeviceDescriptor_GetAccessStatus(descriptor, &status),
            OXEL_RETURN_CODE_INVALID_HANDLE);
  ASSERT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_SUCCESS);
}

TEST(Library, TheLastCloseForgetsLoadedFilesAndTheirCameras) {
  constexpr const char* kFile = R"({"system": {"id": "S", "interfaces": [{"id": "I", "cameras": [
    {"id": "TEMP-CAM", "model": "T", "sensor": {"width": 16, "height": 4}}]}]}})";
  TempDir first, second, none;
  first.Write("temp.cti", kFile);
  second.Write("temp.cti", kFile);
  const auto lastFrame = [](uint64_t* id) { return OxelSim_GetLastFrameId("TEMP-CAM", id); };
  uint64_t frameId = 0;
  {
    World world(first.Path());
    Camera camera = Camera::Open(world, "TEMP-CAM");
    ASSERT_EQ(camera.SetInt("Width", 8), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(camera.SetEnum("TriggerMode", "On"), OXEL_RETURN_CODE_SUCCESS);
    camera.AnnounceAndQueue(3);
    camera.StartAcquisition();
    ASSERT_EQ(camera.Execute("TriggerSoftware"), OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(WaitForFrame(camera, kFrameWaitMs).code, OXEL_RETURN_CODE_SUCCESS);
    ASSERT_EQ(lastFrame(&frameId), OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(frameId, OXEL_SIM_FIRST_FRAME_ID);
    // Another user keeps the files loaded past this world's close.
    ASSERT_EQ(OXEL_Library_Initialize(), OXEL_RETURN_CODE_SUCCESS);
  }
  EXPECT_EQ(lastFrame(&frameId), OXEL_RETURN_CODE_SUCCESS);
  ASSERT_EQ(OXEL_Library_Close(), OXEL_RETURN_CODE_SUCCESS);

  {
    ScopedSearchPath path(none.Path());
    EXPECT_EQ(lastFrame(&frameId), OXEL_RETURN_CODE_NOT_FOUND);
  }
  {
    // Only the camera of the file on the path now answers, fresh from its file,
    // and a mark set before the start holds for that start.
    ScopedSearchPath path(second.Path());
    EXPECT_EQ(lastFrame(&frameId), OXEL_RETURN_CODE_NOT_AVAILABLE);
    ASSERT_EQ(OxelSim_SetOpenedElsewhere("TEMP-CAM", 1), OXEL_RETURN_CODE_SUCCESS);
    World world(second.Path());
    OXEL_DEVICE_ACCESS_STATUS status = 0;
    ASSERT_EQ(OXEL_DeviceDescriptor_GetAccessStatus(world.Descriptor("TEMP-CAM"), &status),
              OXEL_RETURN_CODE_SUCCESS);
    EXPECT_EQ(status, OXEL_DEVICE_ACCESS_STATUS_BUSY);
  }
  World again(first.Path());
  Camera camera = Camera::Open(again, "TEMP-CAM");
  EXPECT_EQ(camera.Int("Width"), 16);
  EXPECT_EQ(lastFrame(&frameId), OXEL_RETURN_CODE_NOT_AVAILABLE);
}

}  // namespace
}  // namespace simtest
