// The Aravis library over a real network path: a GigE Vision fake camera of
// ours on the loopback, in a child process, reported as USB3 Vision through
// OXEL_ARAVIS_AS_U3V. Frames cross as GVSP packets; unplugging is stopping
// that process (by its ID), during live and before a single image.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

extern char** environ;

namespace tavro::testing {
namespace {

// The camera process; stopped by its process ID when the test is done.
class GigeCamera {
 public:
  explicit GigeCamera(const std::string& serial) {
    int out[2];
    if (pipe(out) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    const std::string program = TAVRO_BIN_DIR "/aravis/oxel-aravis-gv-fake";
    std::string serialCopy = serial;
    char* argv[] = {const_cast<char*>(program.c_str()), const_cast<char*>("--serial"),
                    serialCopy.data(), nullptr};
    if (posix_spawn(&pid_, program.c_str(), &actions, nullptr, argv, environ) != 0) pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    // Its first line says it is answering.
    FILE* said = fdopen(out[0], "r");
    char line[256] = {};
    ready_ = pid_ > 0 && said != nullptr && std::fgets(line, sizeof line, said) != nullptr;
    if (said != nullptr) std::fclose(said);
  }
  ~GigeCamera() { Unplug(); }
  bool Ready() const { return ready_; }
  void Unplug() {
    if (pid_ <= 0) return;
    kill(pid_, SIGTERM);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
  }

 private:
  pid_t pid_ = -1;
  bool ready_ = false;
};

class GigeLoopback : public PluginHost {
 protected:
  void SetUp() override {
    setenv("TAVRO_OXEL_LIBRARY", TAVRO_BIN_DIR "/aravis/liboxel.so.1", 1);
    unsetenv("OXEL_ARAVIS_FAKE");
    setenv("OXEL_ARAVIS_AS_U3V", ("Aravis-Fake-" + serial_).c_str(), 1);
    PluginHost::SetUp();
  }
  void TearDown() override {
    PluginHost::TearDown();
    unsetenv("OXEL_ARAVIS_AS_U3V");
  }

  std::string serial_ = "T" + std::to_string(getpid());
};

uint8_t GreyOf(uint32_t x, uint32_t y, uint64_t id) {
  return Luma(OxelSim_PatternBgr8(x, y, id, 2), OxelSim_PatternBgr8(x, y, id, 1),
              OxelSim_PatternBgr8(x, y, id, 0));
}

// The frame in the image, among the IDs the fake camera counts through.
std::optional<uint64_t> FrameOf(const HostImage& image) {
  const int32_t row = image.grey->info.iHeight / 2;
  for (uint64_t id = 65401; id < 65401 + (uint64_t{1} << 20); ++id) {
    bool same = true;
    for (int32_t x = 0; x < 16 && same; ++x) {
      same = image.grey->At(x, row) == GreyOf(uint32_t(x), uint32_t(row), id);
    }
    if (same) return id;
  }
  return std::nullopt;
}

// Waits, within a generous bound, until `done` holds.
template <class Done>
bool Eventually(Done done) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!done()) {
    if (std::chrono::steady_clock::now() > until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return true;
}

TEST_F(GigeLoopback, FramesCrossTheNetworkAndAnUnpluggedCameraEndsAsTheGuideSays) {
  GigeCamera camera(serial_);
  ASSERT_TRUE(camera.Ready());
  ASSERT_EQ(SetupFresh("Fake"), 0);
  ASSERT_EQ(system->iNumCams, 1);

  // Whole frames, one per acquisition, over GVSP.
  HostImage single(0, 256, 64, true);
  single.SetAoi(0, 0, 256, 64);
  std::optional<uint64_t> previous;
  for (int k = 0; k < 3; ++k) {
    ASSERT_EQ(Acquire(single, 1, 0), 0);
    ASSERT_EQ(status, 0u);
    const std::optional<uint64_t> id = FrameOf(single);
    ASSERT_TRUE(id.has_value());
    EXPECT_TRUE(HoldsFrame(single, true, *id));
    if (previous) {
      EXPECT_GT(*id, *previous);
    }
    previous = id;
  }

  // Unplugged during live: the run dies, the status answers 0, and the
  // next live call ends it with one report.
  LiveImage live(0, 256, 64, true);
  live.SetAoi(0, 0, 256, 64);
  finished.clear();
  ASSERT_EQ(Live(live, 1), 0);
  ASSERT_TRUE(live.WaitForNewFrame());
  camera.Unplug();
  EXPECT_TRUE(Eventually([&] { return Status(live) == 0; }));
  ASSERT_EQ(Live(live, 0), 0);
  EXPECT_EQ(system->yLive, 0u);
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].image, &live.image);

  // A single image of the camera that is still away fails and leaves it
  // detached.
  EXPECT_EQ(Acquire(single, 1, 0), -1);
  EXPECT_EQ(system->tSlot[0].yAttached, 0u);
}

}  // namespace
}  // namespace tavro::testing
