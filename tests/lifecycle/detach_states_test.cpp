// A single image pending when its camera is detached or dies: the host
// hears of it once, and the healthy camera's next acquisition and the next
// order work as if nothing had been pending.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

class DetachStates : public PluginHost {
 protected:
  // The wanted configuration: both cameras attached at their numbers, with
  // host ids swapped.
  std::array<CameraRecord, TAVRO_MAX_CAMERAS> SwappedOrder() {
    std::array<CameraRecord, TAVRO_MAX_CAMERAS> wanted{};
    for (int n = 0; n < TAVRO_MAX_CAMERAS; ++n) wanted[n].iCamNum = -1;
    for (int n = 0; n < 2; ++n) {
      std::strcpy(wanted[n].szCamKey, system->tCam[n].szCamKey);
      wanted[n].yEnabled = 1;
      wanted[n].iCamNum = 1 - n;
    }
    return wanted;
  }
};

TEST_F(DetachStates, PendingImageIsReportedAndTheNextCallsWork) {
  const int16_t number = SetupOn({kMono, kColour})[0];
  HostImage image(number, 32, 8, false);
  // Detached with an image pending, then re-attached by an acquire or by
  // an order that wants it back.
  for (const bool byOrder : {false, true}) {
    SCOPED_TRACE(byOrder ? "re-attached by order" : "re-attached by acquire");
    finished.clear();
    std::fill_n(image.grey->memory.data(), image.grey->memory.size(), HostPlane::kFill);
    ASSERT_EQ(Acquire(image, 0, 11), 0);
    ASSERT_EQ(Status(image), ACQSTATUS_ACQUIRING);
    ASSERT_EQ(Detach(number), 0);
    ASSERT_EQ(finished.size(), 1u);
    EXPECT_EQ(finished[0].image, &image.image);
    EXPECT_EQ(finished[0].userValue, 11u);
    EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill) << "the image was not filled";
    EXPECT_EQ(Status(image), -1);  // the camera is detached
    EXPECT_EQ(status, uint32_t{ACQERR_NO_IMAGE});

    if (byOrder) {
      auto wanted = SwappedOrder();
      StdoutOf([&] { plugin.order(system.get(), wanted.data()); });
      EXPECT_EQ(system->tSlot[number].yAttached, 1u);
      EXPECT_EQ(system->aiCamIndex[0], 1) << "order ran to its end";
      EXPECT_EQ(system->aiCamIndex[1], 0);
      image.info.iCamId = static_cast<int16_t>(1 - number);  // the mono camera's id now
    }
    // The healthy camera's next acquisition succeeds at once.
    int32_t acquired = -1;
    StdoutOf([&] { acquired = Acquire(image, 1, 12); });
    EXPECT_EQ(acquired, 0);
    EXPECT_EQ(status, 0u);
    EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));
    ASSERT_EQ(finished.size(), 2u);
    EXPECT_EQ(finished[1].userValue, 12u);
    EXPECT_EQ(Status(image), ACQSTATUS_IDLE);
  }
}

TEST_F(DetachStates, OrderEndsWhereAPendingImageFailsAndReportsNothing) {
  const auto numbers = SetupOn({kMono, kColour});
  const int16_t number = numbers[0];
  HostImage image(number, 32, 8, false);
  // The camera goes away before its frame arrives: the order's wait for it
  // fails, the camera is stopped without a report, and the order ends.
  ASSERT_EQ(OxelSim_DropFrames(kMono.id, 1), 0);
  ASSERT_EQ(Acquire(image, 0, 21), 0);
  ASSERT_EQ(OxelSim_UnplugCamera(kMono.id), 0);
  auto wanted = SwappedOrder();
  wanted[number].yEnabled = 0;
  const std::string out = StdoutOf([&] { plugin.order(system.get(), wanted.data()); });
  EXPECT_EQ(out, "_kxTavroWaitAcquire: error mask 10\n");
  EXPECT_TRUE(finished.empty()) << "a failed wait whose stop succeeds reports nothing";
  EXPECT_EQ(Status(image), ACQSTATUS_IDLE);
  EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill) << "the image was not filled";
  EXPECT_EQ(system->tSlot[number].yAttached, 1u) << "nothing detached";
  EXPECT_EQ(system->aiCamIndex[0], 0) << "nothing re-mapped";
  EXPECT_EQ(system->aiCamIndex[1], 1);

  // Once back, the camera's next acquisition finds its session gone and
  // gets a new one; the same order then runs to its end.
  ASSERT_EQ(OxelSim_ReplugCamera(kMono.id), 0);
  int32_t acquired = -1;
  StdoutOf([&] { acquired = Acquire(image, 1, 22); });
  EXPECT_EQ(acquired, 0);
  EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kMono)));
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].userValue, 22u);
  StdoutOf([&] { plugin.order(system.get(), wanted.data()); });
  EXPECT_EQ(system->tSlot[number].yAttached, 0u);
  EXPECT_EQ(system->aiCamIndex[0], 1);
  EXPECT_EQ(system->aiCamIndex[1], 0);
}

TEST_F(DetachStates, OrderDroppingAnImageStopsItsCameraForTheNextAcquisition) {
  // The bundled monochrome camera ignores triggers while it exposes or
  // reads out a frame; a long exposure keeps the dropped image's frame in
  // flight while the order runs. The exposure stays as it is for the next
  // acquisition, so that no parameter change stops the camera for it.
  const int16_t number = SetupOn({kMono, kColour})[0];
  HostImage dropped(number, 32, 8, false);
  HostImage next(number, 32, 8, false);
  system->tCam[number].tParam[TAVRO_PARAM_EXPOSURE].iCurrent = 300000;  // 0.3 s
  ASSERT_EQ(Acquire(dropped, 0, 31), 0);
  dropped.image.lMagic = 0;  // the host has let the image go
  auto wanted = SwappedOrder();
  StdoutOf([&] { plugin.order(system.get(), wanted.data()); });
  EXPECT_EQ(Status(next), ACQSTATUS_IDLE);
  EXPECT_EQ(system->aiCamIndex[0], 0) << "the order ended at the dropped image";
  EXPECT_TRUE(finished.empty());

  // The next acquisition starts a clean camera: its trigger is taken (not
  // ignored by a camera still busy with the dropped frame) and its own
  // frame arrives; the dropped one never shows.
  uint64_t ignoredBefore = 0, ignoredAfter = 0;
  ASSERT_EQ(OxelSim_GetIgnoredTriggerCount(kMono.id, &ignoredBefore), 0);
  ASSERT_EQ(Acquire(next, 1, 32), 0) << "status " << status;
  ASSERT_EQ(OxelSim_GetIgnoredTriggerCount(kMono.id, &ignoredAfter), 0);
  EXPECT_EQ(ignoredAfter, ignoredBefore);
  EXPECT_TRUE(HoldsFrame(next, false, LastFrameId(kMono)));
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].userValue, 32u);
}

}  // namespace
}  // namespace tavro::testing
