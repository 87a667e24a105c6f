#include "oxel/sim_fixture.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "oxel_sim.h"

namespace oxel::core {

std::string TestProducerFile(const std::string& systemId, const std::string& extraCamera) {
  return R"({"system": {"id": ")" + systemId + R"(", "interfaces": [{"id": "USB0", "cameras": [
    {"id": "CAM-C", "model": "OX-64C", "userDefinedName": "Left", "serial": "C0001",
     "tlType": "U3V", "sensor": {"width": 64, "height": 48},
     "aoi": {"offsetXIncrement": 8, "offsetYIncrement": 2, "widthIncrement": 8,
             "heightIncrement": 2},
     "pixelFormats": ["BGR8", "Mono8"]},
    {"id": "CAM-M", "model": "OX-32M", "tlType": "U3V", "sensor": {"width": 32, "height": 16},
     "pixelFormats": ["Mono8"]})" +
         (extraCamera.empty() ? "" : ", " + extraCamera) + "]}]}}";
}

void SimFixture::SetUp() {
  // The simulator keeps the cameras of every file it loaded, by path: the
  // same path in every test of this process lets it reuse (and reset) them,
  // instead of piling up cameras of the same IDs from earlier tests.
  dir_ = (std::filesystem::temp_directory_path() / ("tavro-oxel-" + std::to_string(getpid())))
             .string();
  std::filesystem::create_directories(dir_);
  if (const char* path = std::getenv("GENICAM_GENTL64_PATH")) {
    hadPath_ = true;
    savedPath_ = path;
  }
  setenv("GENICAM_GENTL64_PATH", dir_.c_str(), 1);
  Library::Initialize();
  ASSERT_TRUE(Library::IsInitialized());
}

void SimFixture::TearDown() {
  Manager().Reset(true);
  OxelSim_ResetAll();
  Library::Close();
  if (hadPath_) {
    setenv("GENICAM_GENTL64_PATH", savedPath_.c_str(), 1);
  } else {
    unsetenv("GENICAM_GENTL64_PATH");
  }
  std::filesystem::remove_all(dir_);
}

std::string SimFixture::WriteProducer(const std::string& name, const std::string& text) {
  const std::string path = dir_ + "/" + name;
  std::ofstream(path) << text;
  return path;
}

void SimFixture::Update() {
  Manager().Update(DeviceManager::UpdatePolicy::ScanEnvironment, [this](const std::string& text) {
    std::lock_guard lock(errorMutex_);
    errors_.push_back(text);
  });
}

std::vector<std::string> SimFixture::Errors() {
  std::lock_guard lock(errorMutex_);
  return errors_;
}

std::shared_ptr<DeviceDescriptor> SimFixture::Descriptor(const std::string& id) {
  for (const auto& descriptor : Manager().Devices()) {
    if (descriptor->ID() == id) {
      return descriptor;
    }
  }
  return nullptr;
}

OpenedCamera::OpenedCamera(const std::shared_ptr<DeviceDescriptor>& descriptor) {
  device = descriptor->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  nodeMap = device->RemoteDevice()->NodeMaps().at(0);
  dataStream = device->DataStreams().at(0)->OpenDataStream();
  const size_t size =
      dataStream->DefinesPayloadSize()
          ? dataStream->PayloadSize()
          : static_cast<size_t>(Feature<nodes::IntegerNode>("PayloadSize")->Value());
  for (size_t i = 0; i < dataStream->NumBuffersAnnouncedMinRequired(); ++i) {
    buffers.push_back(dataStream->AllocAndAnnounceBuffer(size, nullptr));
    dataStream->QueueBuffer(buffers.back());
  }
  Feature<nodes::EnumerationNode>("UserSetSelector")->SetCurrentEntry("Default");
  Feature<nodes::CommandNode>("UserSetLoad")->Execute();
  Feature<nodes::EnumerationNode>("AcquisitionMode")->SetCurrentEntry("Continuous");
}

void OpenedCamera::StartTriggered(const std::string& source) {
  Feature<nodes::EnumerationNode>("TriggerSelector")->SetCurrentEntry("FrameStart");
  Feature<nodes::EnumerationNode>("TriggerMode")->SetCurrentEntry("On");
  Feature<nodes::EnumerationNode>("TriggerSource")->SetCurrentEntry(source);
  Feature<nodes::IntegerNode>("TLParamsLocked")->SetValue(1);
  dataStream->StartAcquisition();
  Feature<nodes::CommandNode>("AcquisitionStart")->Execute();
}

void OpenedCamera::Stop() {
  Feature<nodes::CommandNode>("AcquisitionAbort")->Execute();
  dataStream->StopAcquisition();
  Feature<nodes::IntegerNode>("TLParamsLocked")->SetValue(0);
}

void ExpectPattern(Buffer& buffer, bool bgr) {
  const auto* pixels = static_cast<const uint8_t*>(buffer.BasePtr());
  const size_t width = buffer.Width();
  const size_t height = buffer.Height();
  const uint64_t frameId = buffer.FrameID();
  const auto left = static_cast<uint32_t>(buffer.XOffset());
  const auto top = static_cast<uint32_t>(buffer.YOffset());
  const size_t channels = bgr ? 3 : 1;
  ASSERT_GE(buffer.Size(), width * height * channels);
  size_t mismatches = 0;
  for (uint32_t y = 0; y < height; ++y) {
    for (uint32_t x = 0; x < width; ++x) {
      for (uint32_t c = 0; c < channels; ++c) {
        const uint8_t expected = bgr ? OxelSim_PatternBgr8(left + x, top + y, frameId, c)
                                     : OxelSim_PatternMono8(left + x, top + y, frameId);
        mismatches += pixels[(y * width + x) * channels + c] != expected;
      }
    }
  }
  EXPECT_EQ(mismatches, 0u) << "frame " << frameId;
}

}  // namespace oxel::core
