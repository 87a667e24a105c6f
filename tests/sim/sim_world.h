// Test helpers that drive the simulated Oxel library through its C interface
// (discovery alone goes through the device manager): texts and last errors, a
// producer directory of one's own and feature access by name.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oxel/core/core.h"
#include "oxel/oxel_c.h"
#include "oxel_sim.h"

namespace simtest {

inline constexpr const char* kColourId = "OX23C-21A0417";
inline constexpr const char* kMonoId = "OX13M-21B0112";

struct LastError {
  OXEL_RETURN_CODE code;
  std::string text;
};
LastError TakeLastError();

// Sets GENICAM_GENTL64_PATH for the life of the object.
class ScopedSearchPath {
 public:
  explicit ScopedSearchPath(const std::string& value);
  ~ScopedSearchPath();

 private:
  std::string saved_;
  bool had_ = false;
};

// A fresh directory under the system's temporary directory, removed at the end.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  const std::string& Path() const { return path_; }
  std::string Write(const std::string& name, const std::string& content) const;

 private:
  std::string path_;
};

std::string BundledProducerDir();
// The bundled files with every camera's frames instant, as the build writes them.
std::string InstantProducerDir();

// The library started on the bundled producer files (or those of `dir`), with
// every camera found by the device manager.
class World {
 public:
  explicit World(const std::string& producerDir = BundledProducerDir());
  ~World();

  OXEL_DEVICE_DESCRIPTOR Descriptor(const std::string& deviceId) const;

 private:
  ScopedSearchPath path_;
  std::vector<std::shared_ptr<oxel::core::DeviceDescriptor>> devices_;
};

// One camera opened with control access, its feature node map and its data
// stream (when it has one).
struct Camera {
  OXEL_DEVICE device = nullptr;
  OXEL_NODE_MAP features = nullptr;
  OXEL_DATA_STREAM stream = nullptr;

  static Camera Open(const World& world, const std::string& deviceId);
  void Close();

  OXEL_NODE Node(const std::string& name) const;
  int64_t Int(const std::string& name) const;
  OXEL_RETURN_CODE SetInt(const std::string& name, int64_t value) const;
  OXEL_RETURN_CODE SetFloat(const std::string& name, double value) const;
  OXEL_RETURN_CODE SetEnum(const std::string& name, const std::string& entry) const;
  OXEL_RETURN_CODE Execute(const std::string& name) const;
  // Announces and queues `count` buffers of the payload size.
  std::vector<OXEL_BUFFER> AnnounceAndQueue(size_t count) const;
  // TLParamsLocked, stream start, AcquisitionStart: ready for triggers.
  void StartAcquisition() const;
};

// Every simulated camera back to its producer file, and the library started
// on the bundled producer files (their instant variants with `instant`).
class BundledWorld : public ::testing::Test {
 protected:
  explicit BundledWorld(bool instant = false) : instant_(instant) {}
  void SetUp() override {
    ASSERT_EQ(OxelSim_ResetAll(), OXEL_RETURN_CODE_SUCCESS);
    world_ = std::make_unique<World>(instant_ ? InstantProducerDir() : BundledProducerDir());
  }
  void TearDown() override {
    world_.reset();
    OxelSim_ResetAll();
  }
  std::unique_ptr<World> world_;

 private:
  bool instant_;
};

// Bound of a wait for a frame that must come; it ends as soon as the frame is
// there.
inline constexpr uint64_t kFrameWaitMs = 10000;

// One wait for a finished buffer and, when it succeeded, which frame it holds
// (the buffer stays the caller's).
struct Waited {
  OXEL_RETURN_CODE code = OXEL_RETURN_CODE_SUCCESS;
  OXEL_BUFFER buffer = nullptr;
  uint64_t frameId = 0;
  uint64_t timestampNs = 0;
};
Waited WaitForFrame(const Camera& camera, uint64_t timeoutMs);

// Checks every byte of a delivered frame against the pattern; returns the
// number of wrong bytes (0 when the frame is right).
size_t WrongPixels(OXEL_BUFFER buffer, uint64_t pixelFormat);

}  // namespace simtest
