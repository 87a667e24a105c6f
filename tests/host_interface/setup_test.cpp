// What setup leaves in the acquisition table and the selection copy.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "host_records.h"

namespace tavro::testing {
namespace {

using std::chrono::milliseconds;

TEST(Setup, EveryTableEntryIdleWithASignalledEvent) {
  HostRecords host;
  for (auto& entry : host_interface::tTavroCamAcq) {
    entry.yColour = entry.iUserValue = entry.yAcquiring = entry.yHwTrigger = 1;
    entry.ptCamImage = &host.image;
    entry.iWidthMax = entry.iHeightMax = 99;
    entry.hEvent->Reset();
  }
  SystemRecord other{};
  int width = -7;
  int height = -7;
  EXPECT_EQ(kxTavroSetup(0, nullptr, &width, &height, &other), -1);
  EXPECT_EQ(other.lMagic, 0u);
  EXPECT_EQ(width, -7) << "no camera listed: the sizes are not written";
  for (const auto& entry : host_interface::tTavroCamAcq) {
    EXPECT_EQ(entry.ptSystem, &other);
    EXPECT_EQ(entry.yColour | entry.yAcquiring | entry.yHwTrigger, 0u);
    EXPECT_EQ(entry.ptCamImage, nullptr);
    EXPECT_EQ(entry.iWidthMax | entry.iHeightMax, 0);
    ASSERT_NE(entry.hEvent, nullptr);
    EXPECT_TRUE(entry.hEvent->WaitFor(milliseconds(0)));
  }
}

TEST(Setup, EventsOfAnEarlierSetupStayUsable) {
  HostRecords host;
  // A camera of the first setup may still hold its entry's event.
  platform::ManualResetEvent* earlier = host_interface::tTavroCamAcq[3].hEvent.get();
  lifecycle::ResetAcquisitionTable(host.system.get());
  EXPECT_NE(host_interface::tTavroCamAcq[3].hEvent.get(), earlier);
  earlier->Reset();
  earlier->Set();
  EXPECT_TRUE(earlier->WaitFor(milliseconds(0)));
}

}  // namespace
}  // namespace tavro::testing
