// The plug-in driven through dlopen as a host drives live acquisition: a
// zeroed SystemRecord set up on one or both bundled USB3 Vision cameras,
// host images with their planes, a live display buffer and the host's view
// and display objects, and a record of the host callbacks.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "acquisition/acquire_session.h"
#include "tavro/tavro_host.h"

namespace tavro::live_test {

using acquisition_test::Finished;
using acquisition_test::HostImage;
using acquisition_test::SimCamera;
using acquisition_test::StdoutOf;

// A host image that also has a live display: its 32-bit buffer and the
// view and display objects the host draws it with.
struct LiveImage : HostImage {
  static constexpr uint32_t kDisplayFill = 0xDEADBEEF;
  static constexpr uint64_t kDisplayTag = 0x1122334455667788;
  HostDisplay display{};
  HostView view{};
  LiveBuffer live{};
  std::vector<uint32_t> livePixels;

  LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour);

  // The flag as the host reads and clears it, beside the plug-in's worker.
  uint32_t NewFrameFlag();
  void ClearNewFrameFlag();
  // Waits, within a generous bound, until the plug-in sets the flag.
  bool WaitForNewFrame(std::chrono::seconds bound = std::chrono::seconds(20));
  uint32_t LivePixel(int32_t x, int32_t y) const {
    return livePixels[static_cast<size_t>(live.iStride) * (grey->info.iFirstRow + y) + x];
  }
};

class LiveSession : public ::testing::Test {
 public:
  // Every pfnAcqFinished call since SetUp, in order.
  static std::vector<Finished> finished;

 protected:
  void SetUp() override;
  void TearDown() override;

  // Sets up with the cameras' keys as selection and answers each camera's
  // number, in the order given.
  std::vector<int16_t> SetupOn(std::initializer_list<SimCamera> cameras);

  int32_t Live(HostImage& image, uint32_t start, uint32_t userValue = 0);
  int32_t Acquire(HostImage& image, uint32_t wait, uint32_t userValue);
  int32_t Wait(HostImage& image);
  int32_t Detach(int32_t number);
  int32_t Attach(int32_t number);
  int32_t TearDownPlugin();

  SystemRecord& system() { return *system_; }

  uint32_t status = 0;

 private:
  std::unique_ptr<SystemRecord> system_;
  bool tornDown_ = false;
};

uint64_t LastFrameId(const SimCamera& camera);

}  // namespace tavro::live_test
