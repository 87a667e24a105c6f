// A single image through the plug-in's entry points: waiting now or later,
// the host callback and the status query, a second acquisition that first
// collects the first, the hardware trigger, a lost frame and a camera that
// stops answering.
#include <cinttypes>
#include <cstdio>
#include <string>

#include "oxel_sim.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

using AcquireFlow = PluginHost;

std::string FinishedLine(const CamImage* image) {
  char line[128];
  std::snprintf(line, sizeof line, "Finished waiting for CamImage %llx. yAcquiring = 0\n",
                static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(image)));
  return line;
}

TEST_F(AcquireFlow, AcquireDeliversAndReportsOnceWaitingNowOrInTheWait) {
  SetupOn({kMono});
  HostImage image(0, 64, 8, false);
  for (const uint32_t wait : {0u, 1u}) {
    SCOPED_TRACE(wait != 0 ? "waiting" : "collected by the wait");
    const size_t before = finished.size();
    const uint64_t starts = WriteCount(kMono, "AcquisitionStart");
    const uint64_t triggers = WriteCount(kMono, "TriggerSoftware");
    status = ~0u;
    ASSERT_EQ(Acquire(image, wait, 40 + wait), 0);
    if (wait == 0) {
      EXPECT_EQ(finished.size(), before);
      EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill) << "delivered before the wait";
      EXPECT_EQ(Status(image), ACQSTATUS_ACQUIRING);
      ASSERT_EQ(Wait(image), 0);
    }
    EXPECT_EQ(status, 0u);
    ASSERT_EQ(finished.size(), before + 1);
    EXPECT_EQ(finished.back().image, &image.image);
    EXPECT_EQ(finished.back().userValue, 40 + wait);
    EXPECT_EQ(image.grey->At(63, 7), OxelSim_PatternMono8(63, 7, LastFrameId(kMono)));
    EXPECT_EQ(Status(image), ACQSTATUS_IDLE);
    // The first acquire starts the camera; later ones only fire the trigger.
    EXPECT_EQ(WriteCount(kMono, "AcquisitionStart"), starts + (wait == 0 ? 1 : 0));
    EXPECT_EQ(WriteCount(kMono, "TriggerSoftware"), triggers + 1);

    // Nothing is pending any more.
    EXPECT_EQ(Wait(image), -1);
    EXPECT_EQ(status, ACQERR_NOT_ACQUIRING);
    EXPECT_EQ(finished.size(), before + 1);
  }
}

TEST_F(AcquireFlow, SecondAcquireFirstCollectsThePendingOne) {
  SetupOn({kMono});
  HostImage first(0, 32, 4, false), second(0, 32, 4, false);
  ASSERT_EQ(Acquire(first, 0, 1), 0);
  int32_t result = -1;
  const std::string out = StdoutOf([&] { result = Acquire(second, 1, 2); });
  ASSERT_EQ(result, 0);
  EXPECT_NE(out.find(FinishedLine(&first.image)), std::string::npos) << out;
  ASSERT_EQ(finished.size(), 2u);
  EXPECT_EQ(finished[0].image, &first.image);
  EXPECT_EQ(finished[0].userValue, 1u);
  EXPECT_EQ(finished[1].image, &second.image);
  EXPECT_EQ(finished[1].userValue, 2u);
  // Each image holds its own frame.
  const uint64_t last = LastFrameId(kMono);
  EXPECT_EQ(second.grey->At(1, 1), OxelSim_PatternMono8(1, 1, last));
  EXPECT_EQ(first.grey->At(1, 1), OxelSim_PatternMono8(1, 1, last - 1));
}

TEST_F(AcquireFlow, HardwareTriggerWaitsForALine0Edge) {
  SetupOn({kMono});
  HostImage image(0, 48, 6, false);
  image.info.yHwTrigger = 1;
  ASSERT_EQ(Acquire(image, 0, 9), 0);
  EXPECT_EQ(WriteCount(kMono, "TriggerSoftware"), 0u)
      << "no software trigger on a hardware acquire";
  EXPECT_EQ(Status(image), ACQSTATUS_ACQUIRING);
  ASSERT_EQ(OxelSim_PulseLine0(kMono.id), 0);
  ASSERT_EQ(Wait(image), 0);
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].userValue, 9u);
  EXPECT_EQ(image.grey->At(47, 5), OxelSim_PatternMono8(47, 5, LastFrameId(kMono)));

  // Back to software: the next acquire fires its own trigger.
  image.info.yHwTrigger = 0;
  ASSERT_EQ(Acquire(image, 1, 10), 0);
  EXPECT_EQ(WriteCount(kMono, "TriggerSoftware"), 1u);
  EXPECT_EQ(finished.size(), 2u);
}

TEST_F(AcquireFlow, LostFrameTimesOutWithoutCallbackAndTheNextOneArrives) {
  SetupOn({kMono});
  HostImage image(0, 16, 2, false);
  ASSERT_EQ(OxelSim_DropFrames(kMono.id, 1), 0);
  int32_t result = 0;
  const std::string out = StdoutOf([&] { result = Acquire(image, 1, 3); });
  EXPECT_EQ(result, -1);
  EXPECT_EQ(status, ACQERR_WAIT_TIMEOUT);
  EXPECT_EQ(out, "_kxTavroWaitAcquire: Timeout waiting for acquisition to complete\n");
  EXPECT_TRUE(finished.empty());
  EXPECT_EQ(image.grey->At(0, 0), HostPlane::kFill);
  EXPECT_EQ(Status(image), ACQSTATUS_IDLE);
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);

  // The camera was stopped; the next acquire starts it again.
  const uint64_t starts = WriteCount(kMono, "AcquisitionStart");
  ASSERT_EQ(Acquire(image, 1, 4), 0);
  EXPECT_EQ(WriteCount(kMono, "AcquisitionStart"), starts + 1);
  ASSERT_EQ(finished.size(), 1u);
  EXPECT_EQ(finished[0].userValue, 4u);
}

TEST_F(AcquireFlow, CameraThatStopsAnsweringIsDetached) {
  SetupOn({kMono});
  HostImage image(0, 16, 2, false);
  ASSERT_EQ(OxelSim_UnplugCamera(kMono.id), 0);
  int32_t result = 0;
  status = ~0u;
  const std::string out = StdoutOf([&] { result = Acquire(image, 1, 5); });
  EXPECT_EQ(result, -1);
  EXPECT_EQ(status, 0u);
  EXPECT_NE(out.find("_kxDetachTavroCamera() called\n"), std::string::npos) << out;
  EXPECT_EQ(system->tSlot[0].yAttached, 0u);
  EXPECT_EQ(system->lError, -1) << "the AOI or a parameter could not be written";
  EXPECT_TRUE(finished.empty());
}

}  // namespace
}  // namespace tavro::testing
