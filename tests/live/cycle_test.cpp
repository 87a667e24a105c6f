// The whole life of a camera, hundreds of times in one process, as a host
// that opens and closes its cameras again and again: setup, live start, a
// frame, live stop, detach, re-attach, teardown. Worker threads and the
// camera library's files must not pile up; leaked memory is left to the
// address sanitizer's leak check.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kCycles = 200;  // sanitized runs are several times slower
#else
constexpr int kCycles = 300;
#endif

size_t EntriesOf(const char* directory) {
  size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory)) {
    ++count;
  }
  return count;
}

struct Resources {
  size_t threads = EntriesOf("/proc/self/task");
  size_t files = EntriesOf("/proc/self/fd");
};

class LiveCycle : public PluginHost {
 protected:
  // One full cycle; stops at the first step that fails.
  void RunCycle() {
    const int16_t number = SetupOn({kMono})[0];
    ASSERT_FALSE(HasFailure());
    LiveImage image(number, 40, 24, false);
    ASSERT_EQ(Live(image, 1), 0);
    ASSERT_EQ(status, 0u);
    ASSERT_TRUE(image.WaitForNewFrame());
    ASSERT_EQ(Live(image, 0), 0);
    ASSERT_EQ(status, 0u);
    ASSERT_EQ(system->yLive, 0u);
    ASSERT_EQ(Detach(number), 0);
    ASSERT_EQ(Attach(number), 0);
    ASSERT_EQ(system->tSlot[number].yAttached, 1u);
    ASSERT_EQ(TearDownSystem(), 0);
    ASSERT_EQ(system->tSlot[number].pCamera, nullptr);
    // A stopped live run is not reported to the host.
    ASSERT_TRUE(finished.empty());
  }
};

TEST_F(LiveCycle, RepeatedFullCyclesLeaveNoThreadsOrFilesBehind) {
  UseInstantCameras();  // hundreds of cycles: the camera's timing is not what is tested
  RunCycle();
  ASSERT_FALSE(HasFailure());
  // Counted after the first cycle: whatever is started once per process
  // (the loaded libraries, their helper threads) is in by now.
  const Resources first;
  for (int cycle = 1; cycle < kCycles; ++cycle) {
    SCOPED_TRACE("cycle " + std::to_string(cycle));
    RunCycle();
    ASSERT_FALSE(HasFailure());
  }
  const Resources last;
  EXPECT_EQ(last.threads, first.threads);
  EXPECT_EQ(last.files, first.files);
}

}  // namespace
}  // namespace tavro::testing
