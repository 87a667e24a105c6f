// Manual- and auto-reset events: what a signal releases, what it leaves
// behind, and time-outs.
#include "platform/event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <vector>

namespace tavro::platform {
namespace {

using std::chrono::milliseconds;

constexpr auto kBound = std::chrono::seconds(10);  // generous: only a hang fails

TEST(Event, SignalStateAfterEachOperation) {
  ManualResetEvent manualSet(true);
  AutoResetEvent autoSet(true);
  ManualResetEvent manualClear;
  AutoResetEvent autoClear;

  // A manual event stays signalled through any number of waits.
  EXPECT_TRUE(manualSet.WaitFor(milliseconds(0)));
  EXPECT_TRUE(manualSet.WaitFor(milliseconds(0)));
  manualSet.Wait();
  manualSet.Reset();
  EXPECT_FALSE(manualSet.WaitFor(milliseconds(0)));

  // An auto event releases one wait, then is clear again.
  EXPECT_TRUE(autoSet.WaitFor(milliseconds(0)));
  EXPECT_FALSE(autoSet.WaitFor(milliseconds(0)));
  autoSet.Set();
  autoSet.Wait();
  EXPECT_FALSE(autoSet.WaitFor(milliseconds(0)));

  // Created clear, both time out; a reset clears a pending auto signal.
  EXPECT_FALSE(manualClear.WaitFor(milliseconds(20)));
  EXPECT_FALSE(autoClear.WaitFor(milliseconds(20)));
  autoClear.Set();
  autoClear.Reset();
  EXPECT_FALSE(autoClear.WaitFor(milliseconds(0)));
}

TEST(Event, ManualSignalReleasesEveryWaiter) {
  ManualResetEvent event;
  std::vector<std::future<void>> waiters;
  for (int i = 0; i < 3; ++i) {
    waiters.push_back(std::async(std::launch::async, [&event] { event.Wait(); }));
  }
  event.Set();
  for (auto& waiter : waiters) EXPECT_EQ(waiter.wait_for(kBound), std::future_status::ready);
  EXPECT_TRUE(event.WaitFor(milliseconds(0)));
}

TEST(Event, AutoSignalReleasesOneWaiterAtATime) {
  AutoResetEvent event;
  AutoResetEvent released;
  std::atomic<int> count{0};
  auto waitOnce = [&] {
    const bool woken = event.WaitFor(kBound);
    ++count;
    released.Set();
    return woken;
  };
  auto first = std::async(std::launch::async, waitOnce);
  auto second = std::async(std::launch::async, waitOnce);

  event.Set();
  ASSERT_TRUE(released.WaitFor(kBound));
  EXPECT_EQ(count.load(), 1);
  // The signal went to that waiter: nothing is left for anyone else.
  EXPECT_FALSE(event.WaitFor(milliseconds(0)));

  event.Set();
  EXPECT_TRUE(first.get());
  EXPECT_TRUE(second.get());
  EXPECT_EQ(count.load(), 2);
}

}  // namespace
}  // namespace tavro::platform
