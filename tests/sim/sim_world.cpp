#include "sim_world.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace simtest {

namespace {

// A failed call that a helper cannot go on from: the test fails with the
// library's own text.
void Check(OXEL_RETURN_CODE code, const char* what) {
  if (code == OXEL_RETURN_CODE_SUCCESS) return;
  const LastError error = TakeLastError();
  throw std::runtime_error(std::string(what) + " failed with " + std::to_string(code) + ": " +
                           error.text);
}

}  // namespace

LastError TakeLastError() {
  LastError error{OXEL_RETURN_CODE_SUCCESS, {}};
  size_t size = 0;
  if (OXEL_Library_GetLastError(&error.code, nullptr, &size) != OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error("the last-error size query failed");
  }
  std::string text(size, '\0');
  if (OXEL_Library_GetLastError(&error.code, text.data(), &size) != OXEL_RETURN_CODE_SUCCESS) {
    throw std::runtime_error("the last-error query failed");
  }
  error.text = text.c_str();
  return error;
}

ScopedSearchPath::ScopedSearchPath(const std::string& value) {
  if (const char* old = std::getenv("GENICAM_GENTL64_PATH")) {
    had_ = true;
    saved_ = old;
  }
  setenv("GENICAM_GENTL64_PATH", value.c_str(), 1);
}

ScopedSearchPath::~ScopedSearchPath() {
  if (had_) {
    setenv("GENICAM_GENTL64_PATH", saved_.c_str(), 1);
  } else {
    unsetenv("GENICAM_GENTL64_PATH");
  }
}

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "oxelsim-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string& name, const std::string& content) const {
  const std::string file = path_ + "/" + name;
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

std::string BundledProducerDir() {
  return std::string(TAVRO_SOURCE_DIR) + "/sim/producers";
}

std::string InstantProducerDir() {
  return TAVRO_INSTANT_PRODUCERS;
}

World::World(const std::string& producerDir) : path_(producerDir) {
  oxel::core::Library::Initialize();
  auto& manager = oxel::core::DeviceManager::Instance();
  manager.Update(oxel::core::DeviceManager::UpdatePolicy::ScanEnvironment,
                 [](const std::string& error) { ADD_FAILURE() << error; });
  devices_ = manager.Devices();
}

World::~World() {
  devices_.clear();
  oxel::core::DeviceManager::Instance().Reset(true);
  oxel::core::Library::Close();
}

OXEL_DEVICE_DESCRIPTOR World::Descriptor(const std::string& deviceId) const {
  for (const auto& descriptor : devices_) {
    if (descriptor->ID() == deviceId) return descriptor->Handle();
  }
  throw std::runtime_error("no descriptor for camera " + deviceId);
}

Camera Camera::Open(const World& world, const std::string& deviceId) {
  Camera camera;
  Check(OXEL_DeviceDescriptor_OpenDevice(world.Descriptor(deviceId),
                                         OXEL_DEVICE_ACCESS_TYPE_CONTROL, &camera.device),
        "OpenDevice");
  OXEL_REMOTE_DEVICE remote = nullptr;
  Check(OXEL_Device_GetRemoteDevice(camera.device, &remote), "GetRemoteDevice");
  OXEL_MODULE module = nullptr;
  Check(OXEL_RemoteDevice_ToModule(remote, &module), "RemoteDevice_ToModule");
  Check(OXEL_Module_GetNodeMap(module, 0, &camera.features), "GetNodeMap");
  size_t streams = 0;
  Check(OXEL_Device_GetNumDataStreams(camera.device, &streams), "GetNumDataStreams");
  if (streams > 0) {
    OXEL_DATA_STREAM_DESCRIPTOR descriptor = nullptr;
    Check(OXEL_Device_GetDataStreamDescriptor(camera.device, 0, &descriptor), "GetDescriptor");
    Check(OXEL_DataStreamDescriptor_OpenDataStream(descriptor, &camera.stream), "OpenDataStream");
  }
  return camera;
}

void Camera::Close() {
  if (device != nullptr) Check(OXEL_Device_Close(device), "OXEL_Device_Close");
  device = nullptr;
}

OXEL_NODE Camera::Node(const std::string& name) const {
  OXEL_NODE node = nullptr;
  Check(OXEL_NodeMap_FindNode(features, name.c_str(), name.size() + 1, &node),
        ("FindNode " + name).c_str());
  return node;
}

int64_t Camera::Int(const std::string& name) const {
  OXEL_INTEGER_NODE node = nullptr;
  Check(OXEL_Node_ToIntegerNode(Node(name), &node), "ToIntegerNode");
  int64_t value = 0;
  Check(OXEL_IntegerNode_GetValue(node, OXEL_NODE_CACHE_POLICY_USE_CACHE, &value),
        ("GetValue " + name).c_str());
  return value;
}

OXEL_RETURN_CODE Camera::SetInt(const std::string& name, int64_t value) const {
  OXEL_INTEGER_NODE node = nullptr;
  Check(OXEL_Node_ToIntegerNode(Node(name), &node), "ToIntegerNode");
  return OXEL_IntegerNode_SetValue(node, value);
}

OXEL_RETURN_CODE Camera::SetFloat(const std::string& name, double value) const {
  OXEL_FLOAT_NODE node = nullptr;
  Check(OXEL_Node_ToFloatNode(Node(name), &node), "ToFloatNode");
  return OXEL_FloatNode_SetValue(node, value);
}

OXEL_RETURN_CODE Camera::SetEnum(const std::string& name, const std::string& entry) const {
  OXEL_ENUMERATION_NODE node = nullptr;
  Check(OXEL_Node_ToEnumerationNode(Node(name), &node), "ToEnumerationNode");
  return OXEL_EnumerationNode_SetCurrentEntry(node, entry.c_str(), entry.size() + 1);
}

OXEL_RETURN_CODE Camera::Execute(const std::string& name) const {
  OXEL_COMMAND_NODE node = nullptr;
  Check(OXEL_Node_ToCommandNode(Node(name), &node), "ToCommandNode");
  return OXEL_CommandNode_Execute(node);
}

std::vector<OXEL_BUFFER> Camera::AnnounceAndQueue(size_t count) const {
  const size_t size = static_cast<size_t>(Int("PayloadSize"));
  std::vector<OXEL_BUFFER> buffers;
  for (size_t i = 0; i < count; ++i) {
    OXEL_BUFFER buffer = nullptr;
    Check(OXEL_DataStream_AllocAndAnnounceBuffer(stream, size, nullptr, &buffer), "Announce");
    Check(OXEL_DataStream_QueueBuffer(stream, buffer), "QueueBuffer");
    buffers.push_back(buffer);
  }
  return buffers;
}

void Camera::StartAcquisition() const {
  Check(SetInt("TLParamsLocked", 1), "TLParamsLocked = 1");
  Check(OXEL_DataStream_StartAcquisition(stream, OXEL_ACQUISITION_START_MODE_DEFAULT,
                                         OXEL_INFINITE_NUMBER),
        "StartAcquisition");
  Check(Execute("AcquisitionStart"), "AcquisitionStart");
}

Waited WaitForFrame(const Camera& camera, uint64_t timeoutMs) {
  Waited waited;
  waited.code = OXEL_DataStream_WaitForFinishedBuffer(camera.stream, timeoutMs, &waited.buffer);
  if (waited.code == OXEL_RETURN_CODE_SUCCESS) {
    Check(OXEL_Buffer_GetFrameID(waited.buffer, &waited.frameId), "GetFrameID");
    Check(OXEL_Buffer_GetTimestampNs(waited.buffer, &waited.timestampNs), "GetTimestampNs");
  }
  return waited;
}

size_t WrongPixels(OXEL_BUFFER buffer, uint64_t pixelFormat) {
  void* base = nullptr;
  size_t width = 0, height = 0, x0 = 0, y0 = 0;
  uint64_t frameId = 0;
  Check(OXEL_Buffer_GetBasePtr(buffer, &base), "GetBasePtr");
  Check(OXEL_Buffer_GetWidth(buffer, &width), "GetWidth");
  Check(OXEL_Buffer_GetHeight(buffer, &height), "GetHeight");
  Check(OXEL_Buffer_GetXOffset(buffer, &x0), "GetXOffset");
  Check(OXEL_Buffer_GetYOffset(buffer, &y0), "GetYOffset");
  Check(OXEL_Buffer_GetFrameID(buffer, &frameId), "GetFrameID");
  const auto* bytes = static_cast<const uint8_t*>(base);
  const uint32_t channels = pixelFormat == OXEL_SIM_PIXEL_FORMAT_BGR8 ? 3 : 1;
  size_t wrong = 0;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      for (uint32_t c = 0; c < channels; ++c) {
        const auto sx = static_cast<uint32_t>(x0 + x);
        const auto sy = static_cast<uint32_t>(y0 + y);
        const uint8_t expected = channels == 3 ? OxelSim_PatternBgr8(sx, sy, frameId, c)
                                               : OxelSim_PatternMono8(sx, sy, frameId);
        if (bytes[(y * width + x) * channels + c] != expected) ++wrong;
      }
    }
  }
  return wrong;
}

}  // namespace simtest
