// Tests against the simulated camera library: each test gets its own
// directory of producer files, a started library and an empty device
// manager, and leaves all three as it found them.
#ifndef TESTS_OXEL_SIM_FIXTURE_H
#define TESTS_OXEL_SIM_FIXTURE_H

#include <gtest/gtest.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "oxel/core/core.h"

namespace oxel::core {

// A producer file with one system and one interface "USB0" holding a 64 x 48
// colour camera "CAM-C" and a 32 x 16 monochrome camera "CAM-M".
std::string TestProducerFile(const std::string& systemId);

template <typename T>
std::vector<std::string> Keys(const std::vector<std::shared_ptr<T>>& objects) {
  std::vector<std::string> keys;
  for (const auto& object : objects) {
    keys.push_back(object->ID());
  }
  return keys;
}

class SimFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Writes `text` as `<dir>/<name>` and returns the path.
  std::string WriteProducer(const std::string& name, const std::string& text);
  // Update (by default with ScanEnvironment), collecting the error reports.
  void Update(DeviceManager::UpdatePolicy policy = DeviceManager::UpdatePolicy::ScanEnvironment);
  std::vector<std::string> Errors();
  std::shared_ptr<DeviceDescriptor> Descriptor(const std::string& id);
  DeviceManager& Manager() { return DeviceManager::Instance(); }
  // Records every manager callback in `events_` ("device+ CAM-C", ...).
  void RecordCallbacks();

  std::string dir_;
  std::vector<std::string> events_;

 private:
  std::string savedPath_;
  bool hadPath_ = false;
  std::mutex errorMutex_;
  std::vector<std::string> errors_;
  std::vector<CallbackHandle> handles_;
};

// A camera opened the way the plug-in opens one: device, first node map of
// the remote device, first data stream with its minimum of buffers queued.
struct OpenedCamera {
  explicit OpenedCamera(const std::shared_ptr<DeviceDescriptor>& descriptor);

  // Software trigger on "FrameStart", then acquisition started.
  void StartTriggered();
  void Stop();
  void Trigger() { Feature<nodes::CommandNode>("TriggerSoftware")->Execute(); }
  template <typename T>
  std::shared_ptr<T> Feature(const std::string& name) {
    return nodeMap->FindNode<T>(name);
  }

  std::shared_ptr<Device> device;
  std::shared_ptr<NodeMap> nodeMap;
  std::shared_ptr<DataStream> dataStream;
  std::vector<std::shared_ptr<Buffer>> buffers;
};

}  // namespace oxel::core

#endif  // TESTS_OXEL_SIM_FIXTURE_H
