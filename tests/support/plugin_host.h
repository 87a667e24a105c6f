// The built plug-in driven as a host drives it: libtavro.so loaded with
// dlopen by the host program's loader, a SystemRecord allocated and zeroed
// by the "host", the simulated cameras found through GENICAM_GENTL64_PATH,
// and a record of the host callbacks.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "host/plugin.h"
#include "support/host_image.h"
#include "tavro/tavro_host.h"

namespace tavro::testing {

// Bundled cameras, selected by key: colour 1936 x 1216 "BGR8" (AOI
// increments 8 and 2), mono 1280 x 1024 "Mono8" (increments 4 and 2).
struct SimCamera {
  const char* id;
  const char* key;
};
inline constexpr SimCamera kColour{"OX23C-21A0417", "OX-U3-23C-Left"};
inline constexpr SimCamera kMono{"OX13M-21B0112", "OX-U3-13M"};

// What a call wrote on standard output and standard error.
struct Output {
  std::string out;
  std::string err;
};

struct Finished {
  CamImage* image;
  uint32_t userValue;
};

class PluginHost : public ::testing::Test {
 public:
  // Every pfnAcqFinished call since SetUp, in order.
  static std::vector<Finished> finished;

 protected:
  void SetUp() override;
  // Tears down when a test left the system set up, and restores the
  // producer path.
  void TearDown() override;

  // Setup with the given selection; the output it wrote lands in `output`.
  int Setup(const char* selection, Output* output = nullptr);
  int TearDownSystem(Output* output = nullptr);
  // Sets up a fresh record, with the finished callback, on `selection`.
  int SetupFresh(const char* selection);
  // Sets up a fresh record with the cameras' keys as selection and answers
  // each camera's number, in the order given.
  std::vector<int16_t> SetupOn(std::initializer_list<SimCamera> cameras);

  int32_t Acquire(HostImage& image, uint32_t wait, uint32_t userValue);
  int32_t Live(HostImage& image, uint32_t start, uint32_t userValue = 0);
  int32_t Wait(HostImage& image);
  // The acquisition status value, or -1 when the query fails.
  int64_t Status(HostImage& image);
  int32_t Detach(int32_t number);
  int32_t Attach(int32_t number);

  // Points GENICAM_GENTL64_PATH at a fresh directory holding one producer
  // file per text (named p0.cti, p1.cti, ...).
  void UseProducers(const std::vector<std::string>& files);
  // Points GENICAM_GENTL64_PATH at the bundled cameras with instant frames
  // (each frame read out at its trigger): for tests that need many frames
  // fast. Call before setup; the path is restored after the test.
  void UseInstantCameras();

  std::string Key(int camera) const { return system->tCam[camera].szCamKey; }

  // Loaded once and kept for the process, as a host keeps it.
  const tavro_host::Plugin& plugin = tavro_host::LoadPlugin();
  std::unique_ptr<SystemRecord> system = std::make_unique<SystemRecord>();
  int widest = -1;
  int highest = -1;
  uint32_t status = 0;

 private:
  bool setUp_ = false;
  std::string directory_;
  std::string savedPath_;
  bool hadPath_ = false;
};

// What a call wrote on standard output.
template <typename Call>
std::string StdoutOf(Call call) {
  ::testing::internal::CaptureStdout();
  call();
  return ::testing::internal::GetCapturedStdout();
}

uint64_t LastFrameId(const SimCamera& camera);
uint64_t WriteCount(const SimCamera& camera, const char* feature);

// A producer file of one system and bus with the given camera objects.
std::string ProducerFile(const std::vector<std::string>& cameras);
// A small free monochrome camera, optionally with further members.
std::string SmallCamera(const std::string& id, const std::string& model,
                        const std::string& extra = "");

}  // namespace tavro::testing
