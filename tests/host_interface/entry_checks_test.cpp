// The argument checks of the four entry points that take an image and a
// status word: which check answers, with which bit, in which order. Calls
// that pass every check reach the acquisition work, which fails with the
// status word left 0 until it exists.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <vector>

#include "host_records.h"

namespace tavro::testing {
namespace {

struct Outcome {
  int32_t result;
  uint32_t status;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* os) {
  *os << "{" << outcome.result << ", 0x" << std::hex << outcome.status << "}";
}

constexpr uint32_t kUntouched = 0xEEEEu;
constexpr Outcome kReachesWork{-1, 0};

struct Call {
  SystemRecord* system;
  CamImage* image;
};

struct Row {
  const char* what;
  std::function<void(HostRecords&, Call&)> arrange;
  Outcome acquire, live, wait, status;
  uint32_t acqStatus;  // value written by the status query, or kUntouched
};

Outcome Fail(uint32_t bits) {
  return {-1, bits};
}

TEST(EntryChecks, EachCheckAnswersWithItsBitInOrder) {
  constexpr int16_t kId = 2;
  constexpr int32_t kCamera = 5;
  const Outcome noCamera = Fail(ACQERR_NO_CAMERA);
  const Outcome statusFails = Fail(ACQERR_NO_IMAGE);
  const std::vector<Row> rows = {
      {"no record", [](HostRecords&, Call& c) { c.system = nullptr; }, Fail(ACQERR_NO_SYSTEM),
       Fail(ACQERR_NO_SYSTEM), Fail(ACQERR_NO_SYSTEM), statusFails, kUntouched},
      {"wrong magic", [](HostRecords& h, Call&) { h.system->lMagic = TAVRO_IMAGE_MAGIC; },
       Fail(ACQERR_NO_SYSTEM), Fail(ACQERR_NO_SYSTEM), Fail(ACQERR_NO_SYSTEM), statusFails,
       kUntouched},
      {"no image",
       [](HostRecords&, Call& c) { c.image = nullptr; },
       Fail(ACQERR_NO_IMAGE),
       Fail(ACQERR_NO_IMAGE),
       {0, 0},
       statusFails,
       kUntouched},
      {"id 16", [](HostRecords& h, Call&) { h.info.iCamId = 16; }, noCamera, noCamera, noCamera,
       statusFails, kUntouched},
      {"id -1", [](HostRecords& h, Call&) { h.info.iCamId = -1; }, noCamera, noCamera, noCamera,
       statusFails, kUntouched},
      {"map entry -1", [](HostRecords& h, Call&) { h.system->aiCamIndex[kId] = -1; }, noCamera,
       noCamera, noCamera, statusFails, kUntouched},
      {"map entry 16", [](HostRecords& h, Call&) { h.system->aiCamIndex[kId] = 16; }, noCamera,
       noCamera, noCamera, statusFails, kUntouched},
      {"image without camera object", [](HostRecords& h, Call&) { h.image.ptCamera = nullptr; },
       noCamera, noCamera, noCamera, statusFails, kUntouched},
      // Acquire re-attaches (and cannot yet); live leaves that test to its work.
      {"detached", [](HostRecords& h, Call&) { h.system->tSlot[kCamera].yAttached = 0; }, noCamera,
       kReachesWork, noCamera, statusFails, kUntouched},
      {"attached, idle",
       [](HostRecords&, Call&) {},
       kReachesWork,
       kReachesWork,
       kReachesWork,
       {0, 0},
       ACQSTATUS_IDLE},
      {"attached, acquiring",
       [](HostRecords&, Call&) { host_interface::tTavroCamAcq[kCamera].yAcquiring = 1; },
       kReachesWork,
       kReachesWork,
       kReachesWork,
       {0, 0},
       ACQSTATUS_ACQUIRING},
      {"live on this image",
       [](HostRecords& h, Call&) {
         h.system->yLive = 1;
         h.system->ptLiveImage = &h.image;
       },
       kReachesWork,
       Fail(ACQERR_LIVE_RUNNING),
       Fail(ACQERR_LIVE_RUNNING),
       {0, 0},
       ACQSTATUS_LIVE},
      // The live image answers before its camera is looked up, except in live.
      {"live on this image, no camera",
       [](HostRecords& h, Call&) {
         h.system->yLive = 1;
         h.system->ptLiveImage = &h.image;
         h.info.iCamId = 16;
       },
       noCamera,
       noCamera,
       Fail(ACQERR_LIVE_RUNNING),
       {0, 0},
       ACQSTATUS_LIVE},
      {"live on another image",
       [](HostRecords& h, Call&) {
         h.system->yLive = 1;
         h.system->ptLiveImage = nullptr;
       },
       kReachesWork,
       Fail(ACQERR_LIVE_RUNNING),
       kReachesWork,
       {0, 0},
       ACQSTATUS_IDLE},
  };

  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    HostRecords host;
    host.Attach(kCamera, "M1", false, kId);
    Call call{host.system.get(), &host.image};
    row.arrange(host, call);

    uint32_t status = 0xFFFFFFFFu;
    Outcome outcome{kxTavroAcquire(call.image, 1, 7, &status, call.system), status};
    EXPECT_EQ(outcome, row.acquire) << "acquire";
    status = 0xFFFFFFFFu;
    outcome = {kxTavroLiveAcquire(call.image, 1, 7, &status, call.system), status};
    EXPECT_EQ(outcome, row.live) << "live start";
    status = 0xFFFFFFFFu;
    outcome = {kxTavroWaitAcquire(call.image, 0, 3, &status, call.system), status};
    EXPECT_EQ(outcome, row.wait) << "wait";
    status = 0xFFFFFFFFu;
    uint32_t acqStatus = kUntouched;
    outcome = {kxTavroAcquireStatus(call.image, &acqStatus, &status, call.system), status};
    EXPECT_EQ(outcome, row.status) << "status";
    EXPECT_EQ(acqStatus, row.acqStatus) << "status value";
  }
}

TEST(EntryChecks, LiveStopPassesWhileLiveRuns) {
  HostRecords host;
  host.Attach(0, "M1", false, 0);
  host.system->yLive = 1;
  host.system->ptLiveImage = &host.image;
  uint32_t status = 0xFFFFFFFFu;
  const Outcome stop{kxTavroLiveAcquire(&host.image, 0, 7, &status, host.system.get()), status};
  EXPECT_EQ(stop, kReachesWork);
}

TEST(EntryChecks, NullResultPointersFailWithoutBeingWritten) {
  HostRecords host;
  host.Attach(0, "M1", false, 0);
  SystemRecord* system = host.system.get();
  EXPECT_EQ(kxTavroAcquire(&host.image, 1, 0, nullptr, system), -1);
  EXPECT_EQ(kxTavroLiveAcquire(&host.image, 1, 0, nullptr, system), -1);
  EXPECT_EQ(kxTavroWaitAcquire(&host.image, 0, 0, nullptr, system), -1);
  uint32_t value = kUntouched;
  EXPECT_EQ(kxTavroAcquireStatus(&host.image, &value, nullptr, system), -1);
  EXPECT_EQ(value, kUntouched);
  uint32_t status = 0xFFFFFFFFu;
  EXPECT_EQ(kxTavroAcquireStatus(&host.image, nullptr, &status, system), -1);
  EXPECT_EQ(status, ACQERR_NO_IMAGE);

  int width = 0;
  EXPECT_EQ(kxTavroSetup(0, nullptr, &width, nullptr, system), -1);
  EXPECT_EQ(kxTavroSetup(0, nullptr, nullptr, &width, system), -1);
  EXPECT_EQ(system->lMagic, TAVRO_SYSTEM_MAGIC) << "a refused setup writes nothing";
  EXPECT_EQ(_kxTavroOrder(system, nullptr), 0);
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);
}

}  // namespace
}  // namespace tavro::testing
