// The built plug-in driven as a host drives it: libtavro.so loaded with
// dlopen, the entry points resolved by name through the header's pointer
// types, a SystemRecord allocated and zeroed by the "host", and the
// simulated cameras found through GENICAM_GENTL64_PATH.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tavro/tavro_host.h"

namespace tavro::testing {

struct Plugin {
  PFN_kxTavroSetup setup = nullptr;
  PFN_kxTavroTearDown tearDown = nullptr;
  PFN_kxAttachTavroCamera attach = nullptr;
  PFN_kxDetachTavroCamera detach = nullptr;
};

// Loaded once and kept for the process, as a host keeps it.
const Plugin& LoadedPlugin();

// What a call wrote on standard output and standard error.
struct Output {
  std::string out;
  std::string err;
};

class PluginSession : public ::testing::Test {
 protected:
  void SetUp() override;
  // Tears down when a test left the system set up, and restores the
  // producer path.
  void TearDown() override;

  // Setup with the given selection; the output it wrote lands in `output`.
  int Setup(const char* selection, Output* output = nullptr);
  int TearDownSystem(Output* output = nullptr);

  // Points GENICAM_GENTL64_PATH at a fresh directory holding one producer
  // file per text (named p0.cti, p1.cti, ...).
  void UseProducers(const std::vector<std::string>& files);

  std::string Key(int camera) const { return system->tCam[camera].szCamKey; }

  const Plugin& plugin = LoadedPlugin();
  std::unique_ptr<SystemRecord> system = std::make_unique<SystemRecord>();
  int widest = -1;
  int highest = -1;

 private:
  bool setUp_ = false;
  std::string directory_;
  std::string savedPath_;
  bool hadPath_ = false;
};

// A producer file of one system and bus with the given camera objects.
std::string ProducerFile(const std::vector<std::string>& cameras);
// A small free monochrome camera, optionally with further members.
std::string SmallCamera(const std::string& id, const std::string& model,
                        const std::string& extra = "");

}  // namespace tavro::testing
