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
// colour camera "CAM-C" (user-defined name "Left") and a 32 x 16 monochrome
// camera "CAM-M". `extraCamera` is inserted as a further camera object.
std::string TestProducerFile(const std::string& systemId, const std::string& extraCamera = "");

class SimFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Writes `text` as `<dir>/<name>` and returns the path.
  std::string WriteProducer(const std::string& name, const std::string& text);
  // Update with ScanEnvironment, collecting the error reports.
  void Update();
  std::vector<std::string> Errors();
  std::shared_ptr<DeviceDescriptor> Descriptor(const std::string& id);
  DeviceManager& Manager() { return DeviceManager::Instance(); }

  std::string dir_;

 private:
  std::string savedPath_;
  bool hadPath_ = false;
  std::mutex errorMutex_;
  std::vector<std::string> errors_;
};

// A camera opened the way the plug-in opens one: device, first node map of
// the remote device, first data stream with its minimum of buffers queued,
// default user set, continuous mode.
struct OpenedCamera {
  explicit OpenedCamera(const std::shared_ptr<DeviceDescriptor>& descriptor);

  // Software trigger (or line 0) on "FrameStart", then acquisition started.
  void StartTriggered(const std::string& source);
  void Stop();
  template <typename T>
  std::shared_ptr<T> Feature(const std::string& name) {
    return nodeMap->FindNode<T>(name);
  }

  std::shared_ptr<Device> device;
  std::shared_ptr<NodeMap> nodeMap;
  std::shared_ptr<DataStream> dataStream;
  std::vector<std::shared_ptr<Buffer>> buffers;
};

// Expects every pixel of a delivered frame to follow the simulator's pattern.
void ExpectPattern(Buffer& buffer, bool bgr);

}  // namespace oxel::core

#endif  // TESTS_OXEL_SIM_FIXTURE_H
