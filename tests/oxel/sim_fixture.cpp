#include "oxel/sim_fixture.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "oxel_sim.h"

namespace oxel::core {

std::string TestProducerFile(const std::string& systemId) {
  return R"({"system": {"id": ")" + systemId + R"(", "interfaces": [{"id": "USB0", "cameras": [
    {"id": "CAM-C", "model": "OX-64C", "tlType": "U3V", "sensor": {"width": 64, "height": 48},
     "pixelFormats": ["BGR8", "Mono8"]},
    {"id": "CAM-M", "model": "OX-32M", "tlType": "U3V", "sensor": {"width": 32, "height": 16},
     "pixelFormats": ["Mono8"]}]}]}})";
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
  if (!handles_.empty()) {
    EXPECT_TRUE(Manager().UnregisterSystemFoundCallback(handles_[0]));
    EXPECT_TRUE(Manager().UnregisterInterfaceFoundCallback(handles_[1]));
    EXPECT_TRUE(Manager().UnregisterInterfaceLostCallback(handles_[2]));
    EXPECT_TRUE(Manager().UnregisterDeviceFoundCallback(handles_[3]));
    EXPECT_TRUE(Manager().UnregisterDeviceLostCallback(handles_[4]));
    EXPECT_FALSE(Manager().UnregisterDeviceLostCallback(handles_[4]));
  }
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

void SimFixture::Update(DeviceManager::UpdatePolicy policy) {
  Manager().Update(policy, [this](const std::string& text) {
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

void SimFixture::RecordCallbacks() {
  auto& m = Manager();
  handles_ = {
      m.RegisterSystemFoundCallback(
          [this](const auto& s) { events_.push_back("system+ " + s->ID()); }),
      m.RegisterInterfaceFoundCallback(
          [this](const auto& i) { events_.push_back("interface+ " + i->ID()); }),
      m.RegisterInterfaceLostCallback(
          [this](const std::string& key) { events_.push_back("interface- " + key); }),
      m.RegisterDeviceFoundCallback(
          [this](const auto& d) { events_.push_back("device+ " + d->ID()); }),
      m.RegisterDeviceLostCallback(
          [this](const std::string& key) { events_.push_back("device- " + key); }),
  };
}

OpenedCamera::OpenedCamera(const std::shared_ptr<DeviceDescriptor>& descriptor) {
  device = descriptor->OpenDevice(OXEL_DEVICE_ACCESS_TYPE_CONTROL);
  nodeMap = device->RemoteDevice()->NodeMaps().at(0);
  dataStream = device->DataStreams().at(0)->OpenDataStream();
  for (size_t i = 0; i < dataStream->NumBuffersAnnouncedMinRequired(); ++i) {
    buffers.push_back(dataStream->AllocAndAnnounceBuffer(dataStream->PayloadSize(), nullptr));
    dataStream->QueueBuffer(buffers.back());
  }
}

void OpenedCamera::StartTriggered() {
  Feature<nodes::EnumerationNode>("TriggerSelector")->SetCurrentEntry("FrameStart");
  Feature<nodes::EnumerationNode>("TriggerMode")->SetCurrentEntry("On");
  Feature<nodes::EnumerationNode>("TriggerSource")->SetCurrentEntry("Software");
  Feature<nodes::IntegerNode>("TLParamsLocked")->SetValue(1);
  dataStream->StartAcquisition();
  Feature<nodes::CommandNode>("AcquisitionStart")->Execute();
}

void OpenedCamera::Stop() {
  Feature<nodes::CommandNode>("AcquisitionAbort")->Execute();
  dataStream->StopAcquisition();
  Feature<nodes::IntegerNode>("TLParamsLocked")->SetValue(0);
}

}  // namespace oxel::core
