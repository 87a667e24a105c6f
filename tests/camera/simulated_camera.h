// Test helper shared by the camera, geometry and parameter tests: opens one
// of the simulator's bundled cameras the way setup does it (library start,
// producer libraries from the environment, one device update, a new camera
// object bound to the descriptor with the wanted ID, then OpenCamera).
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "lifecycle/open_camera.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"
#include "oxel_sim.h"

namespace tavro::simtest {

// Bundled cameras: colour 1936 x 1216 ("BGR8" and "Mono8", gain selector
// "All" only), mono 1280 x 1024 (gain 1.0 to 16.0, exposure 13 to 1e7).
inline constexpr const char* kColourCameraId = "OX23C-21A0417";
inline constexpr const char* kMonoCameraId = "OX13M-21B0112";

inline std::shared_ptr<oxel::core::DeviceDescriptor> FindSimulatedCamera(const std::string& id) {
  static const bool started = [] {
    oxel::core::Library::Initialize();
    return true;
  }();
  (void)started;
  auto& manager = oxel::core::DeviceManager::Instance();
  for (const std::string& path : oxel::core::FindProducerLibraries()) {
    manager.AddProducerLibrary(path);
  }
  manager.Update(oxel::core::DeviceManager::UpdatePolicy::AddedPathsOnly, {});
  for (const auto& descriptor : manager.Devices()) {
    if (descriptor->ID() == id) return descriptor;
  }
  return nullptr;
}

// Null when the camera cannot be found or opened.
inline std::unique_ptr<camera::OxelCamera> OpenSimulatedCamera(const std::string& id) {
  auto camera = std::make_unique<camera::OxelCamera>();
  camera->descriptor = FindSimulatedCamera(id);
  if (!camera->descriptor || !lifecycle::OpenCamera(*camera)) return nullptr;
  return camera;
}

inline uint64_t WriteCount(const std::string& id, const std::string& feature) {
  uint64_t count = 0;
  EXPECT_EQ(OxelSim_GetFeatureWriteCount(id.c_str(), feature.c_str(), &count), 0) << feature;
  return count;
}

template <typename Node>
auto FeatureValue(camera::OxelCamera& camera, const std::string& name) {
  return camera::Feature<Node>(camera.nodeMap, name)->Value();
}

inline std::string EntryOf(camera::OxelCamera& camera, const std::string& name) {
  return camera::Feature<oxel::core::nodes::EnumerationNode>(camera.nodeMap, name)
      ->CurrentEntry()
      ->SymbolicValue();
}

// Waits for a condition that another thread brings about, polling with a
// bounded time-out (generous: sanitizer builds are slow).
template <typename Predicate>
bool WaitUntil(Predicate done, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Host planes with a known fill, bound to a camera as the acquisition code
// binds a host image: grey always, colour planes on request. The colour
// planes advance by the grey pitch, so all four share it.
struct HostImage {
  static constexpr uint8_t kFill = 0xA5;
  int32_t width, height, pitch;
  std::vector<uint8_t> grey, red, green, blue;

  HostImage(int32_t w, int32_t h)
      : width(w),
        height(h),
        pitch(w + 3),
        grey(static_cast<size_t>(pitch) * h, kFill),
        red(grey),
        green(grey),
        blue(grey) {}

  void Bind(camera::OxelCamera& camera, bool colour) {
    camera::Destination& d = camera.destination;
    d.width = width;
    d.height = height;
    d.pitch = pitch;
    d.colour = colour;
    d.grey = grey.data();
    d.red = colour ? red.data() : nullptr;
    d.green = colour ? green.data() : nullptr;
    d.blue = colour ? blue.data() : nullptr;
    d.copyLimitWidth = camera.widthMax;
    d.copyLimitHeight = camera.heightMax;
    d.sourceIsBgr = camera.isColour;
  }

  uint8_t Grey(int32_t x, int32_t y) const { return grey[static_cast<size_t>(pitch) * y + x]; }
  uint8_t Red(int32_t x, int32_t y) const { return red[static_cast<size_t>(pitch) * y + x]; }
  uint8_t Green(int32_t x, int32_t y) const { return green[static_cast<size_t>(pitch) * y + x]; }
  uint8_t Blue(int32_t x, int32_t y) const { return blue[static_cast<size_t>(pitch) * y + x]; }
};

inline uint64_t LastFrameId(const std::string& id) {
  uint64_t frameId = 0;
  EXPECT_EQ(OxelSim_GetLastFrameId(id.c_str(), &frameId), 0);
  return frameId;
}

// Every test starts from the cameras as their producer files describe them.
class SimulatedCameraTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(FindSimulatedCamera(kColourCameraId)) << "bundled producer files not found";
    ASSERT_EQ(OxelSim_ResetAll(), 0);
  }
};

}  // namespace tavro::simtest
