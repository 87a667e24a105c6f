// The plug-in driven through dlopen as a host drives it for single images:
// a zeroed SystemRecord set up on one bundled simulated camera, host images
// with their own plane memory, and a record of the host callbacks.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tavro/tavro_host.h"

namespace tavro::acquisition_test {

// Bundled cameras, selected by key: colour 1936 x 1216 "BGR8" (AOI
// increments 8 and 2), mono 1280 x 1024 "Mono8" (increments 4 and 2).
struct SimCamera {
  const char* id;
  const char* key;
};
inline constexpr SimCamera kColour{"OX23C-21A0417", "OX-U3-23C-Left"};
inline constexpr SimCamera kMono{"OX13M-21B0112", "OX-U3-13M"};

// One 8-bit plane with its memory: `firstRow` rows above the image, then
// `height` rows of `pitch` bytes, filled with kFill. Nothing more, so a
// write past the plane is caught by the address sanitizer.
struct HostPlane {
  static constexpr uint8_t kFill = 0xA5;
  PlaneInfo info{};
  std::vector<uint8_t> memory;

  HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow = 0);
  uint8_t At(int32_t x, int32_t y) const {
    return memory[static_cast<size_t>(info.iPitch) * (info.iFirstRow + y) + x];
  }
};

// A host image: a grey plane, and colour plane images when asked for.
struct HostImage {
  CameraInfo info{};
  CamImage image{};
  std::unique_ptr<HostPlane> grey, red, green, blue;
  CamImage redImage{}, greenImage{}, blueImage{};

  HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes);
  void SetAoi(int32_t left, int32_t top, int32_t right, int32_t bottom);
};

struct Finished {
  CamImage* image;
  uint32_t userValue;
};

class AcquireSession : public ::testing::Test {
 public:
  // Every pfnAcqFinished call since SetUp, in order.
  static std::vector<Finished> finished;

 protected:
  void SetUp() override;
  void TearDown() override;

  // Sets up with the camera's key as selection; it becomes camera 0.
  void SetupOn(const SimCamera& camera);

  int32_t Acquire(HostImage& image, uint32_t wait, uint32_t userValue);
  int32_t Wait(HostImage& image);
  // The acquisition status value, or -1 when the query fails.
  int64_t Status(HostImage& image);

  uint64_t LastFrameId() const;
  uint64_t WriteCount(const char* feature) const;

  SystemRecord& system() { return *system_; }

  uint32_t status = 0;

 private:
  std::unique_ptr<SystemRecord> system_;
  const SimCamera* camera_ = nullptr;
};

// What a call wrote on standard output.
template <typename Call>
std::string StdoutOf(Call call) {
  ::testing::internal::CaptureStdout();
  call();
  return ::testing::internal::GetCapturedStdout();
}

}  // namespace tavro::acquisition_test
