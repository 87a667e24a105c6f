// What setup leaves in the acquisition table and the selection copy.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
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
  // No producer to find cameras through: setup fails after step 3.
  const char* producers = std::getenv("GENICAM_GENTL64_PATH");
  const std::string saved = producers != nullptr ? producers : "";
  setenv("GENICAM_GENTL64_PATH", "/nonexistent/tavro-producers", 1);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(kxTavroSetup(0, nullptr, &width, &height, &other), -1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "No Tavro cameras connected\n");
  setenv("GENICAM_GENTL64_PATH", saved.c_str(), 1);
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
  EXPECT_EQ(kxTavroTearDown(&other), 0) << "closes the library setup started";
}

TEST(Setup, EventsOfAnEarlierSetupStayUsableWhileACameraMayHoldThem) {
  HostRecords host;
  // A camera object of the first setup, kept in another record, may still
  // signal its entry's event from its worker.
  HostRecords elsewhere;
  elsewhere.Attach(0, "M1", true);
  platform::ManualResetEvent* earlier = host_interface::tTavroCamAcq[3].hEvent.get();
  lifecycle::ResetAcquisitionTable(host.system.get());
  EXPECT_NE(host_interface::tTavroCamAcq[3].hEvent.get(), earlier);
  earlier->Reset();
  earlier->Set();
  EXPECT_TRUE(earlier->WaitFor(milliseconds(0)));
}

}  // namespace
}  // namespace tavro::testing
