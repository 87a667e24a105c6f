// The argument checks of the four entry points that take an image and a
// status word: which check answers, with which bit, in which order. Calls
// that pass every check reach the acquisition work, which fails here (the
// slot has no camera object) with the status word 0 or one of its own bits.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include "host_interface/entry_guard.h"
#include "host_records.h"
#include "oxel/core/device_manager.h"
#include "oxel/core/library.h"

namespace tavro::testing {
namespace {

enum class Live { kNone, kThisImage, kOtherImage };

// How the records differ from an attached, idle camera 5 reached from id 2.
struct Knobs {
  const char* what;
  bool noRecord = false, wrongMagic = false, noImage = false, noCameraObject = false;
  int16_t id = 2;
  int32_t mapEntry = 5;
  bool attached = true, acquiring = false;
  Live live = Live::kNone;
};

// An answer: -1 with these status bits, or one of the two below.
constexpr int64_t kReachesWork = -1;  // -1 with the status word 0
constexpr int64_t kAnswersZero = -2;  // 0 with the status word 0
constexpr uint32_t kUntouched = 0xEEEEu;

struct Row {
  Knobs knobs;
  int64_t acquire, live, wait, status;
  uint32_t acqStatus;  // the status query's value
};

// Bits that only the acquisition work sets, never a check.
constexpr uint32_t kWorkBits =
    ACQERR_WAIT_FAILED | ACQERR_WAIT_TIMEOUT | ACQERR_NOT_ACQUIRING | ACQERR_CAMERA_OP;

int64_t Answer(int32_t result, uint32_t status) {
  if (result == 0 && status == 0) return kAnswersZero;
  if (result == -1 && (status & ~kWorkBits) == 0) return kReachesWork;
  return result == -1 ? int64_t{status} : 1000 + result;
}

TEST(EntryChecks, EachCheckAnswersWithItsBitInOrder) {
  constexpr int64_t kSystem = ACQERR_NO_SYSTEM, kImage = ACQERR_NO_IMAGE,
                    kCamera = ACQERR_NO_CAMERA, kLive = ACQERR_LIVE_RUNNING;
  const std::vector<Row> rows = {
      {{.what = "no record", .noRecord = true}, kSystem, kSystem, kSystem, kImage, kUntouched},
      {{.what = "wrong magic", .wrongMagic = true}, kSystem, kSystem, kSystem, kImage, kUntouched},
      {{.what = "no image", .noImage = true}, kImage, kImage, kAnswersZero, kImage, kUntouched},
      {{.what = "id 16", .id = 16}, kCamera, kCamera, kCamera, kImage, kUntouched},
      {{.what = "id -1", .id = -1}, kCamera, kCamera, kCamera, kImage, kUntouched},
      {{.what = "map entry -1", .mapEntry = -1}, kCamera, kCamera, kCamera, kImage, kUntouched},
      {{.what = "map entry 16", .mapEntry = 16}, kCamera, kCamera, kCamera, kImage, kUntouched},
      {{.what = "no camera object", .noCameraObject = true},
       kCamera,
       kCamera,
       kCamera,
       kImage,
       kUntouched},
      // Acquire tries to re-attach (the key is not listed); live refuses a detached camera.
      {{.what = "detached", .attached = false}, kCamera, kCamera, kCamera, kImage, kUntouched},
      {{.what = "idle"}, kReachesWork, kReachesWork, kReachesWork, kAnswersZero, ACQSTATUS_IDLE},
      {{.what = "acquiring", .acquiring = true},
       kReachesWork,
       kReachesWork,
       kReachesWork,
       kAnswersZero,
       ACQSTATUS_ACQUIRING},
      {{.what = "live here", .live = Live::kThisImage},
       kReachesWork,
       kLive,
       kLive,
       kAnswersZero,
       ACQSTATUS_LIVE},
      // The live image answers before its camera is looked up, except in live.
      {{.what = "live here, no camera", .id = 16, .live = Live::kThisImage},
       kCamera,
       kCamera,
       kLive,
       kAnswersZero,
       ACQSTATUS_LIVE},
      {{.what = "live elsewhere", .live = Live::kOtherImage},
       kReachesWork,
       kLive,
       kReachesWork,
       kAnswersZero,
       ACQSTATUS_IDLE},
  };

  // A detached camera is looked for again among the listed cameras.
  oxel::Library::Initialize();
  for (const Row& row : rows) {
    const Knobs& k = row.knobs;
    SCOPED_TRACE(k.what);
    HostRecords host;
    host.Attach(5, "M1", false, 2);
    SystemRecord* system = k.noRecord ? nullptr : host.system.get();
    CamImage* image = k.noImage ? nullptr : &host.image;
    if (k.wrongMagic) host.system->lMagic = TAVRO_IMAGE_MAGIC;
    if (k.noCameraObject) host.image.ptCamera = nullptr;
    host.info.iCamId = k.id;
    host.system->aiCamIndex[2] = k.mapEntry;
    // The work detaches the camera or ends the acquisition: each call
    // starts from the row's state again.
    auto restore = [&] {
      host.system->tSlot[5].yAttached = k.attached ? 1 : 0;
      host_interface::tTavroCamAcq[5].yAcquiring = k.acquiring ? 1 : 0;
      host.system->yLive = k.live == Live::kNone ? 0 : 1;
      host.system->ptLiveImage = k.live == Live::kThisImage ? &host.image : nullptr;
    };

    // Each call starts from a status word the entry point must clear.
    uint32_t status = 0xFFFFFFFFu;
    auto answer = [&status, &restore](int32_t result) {
      restore();
      return Answer(result, std::exchange(status, ~0u));
    };
    restore();
    EXPECT_EQ(answer(kxTavroAcquire(image, 1, 7, &status, system)), row.acquire);
    EXPECT_EQ(answer(kxTavroLiveAcquire(image, 1, 7, &status, system)), row.live);
    EXPECT_EQ(answer(kxTavroWaitAcquire(image, 0, 3, &status, system)), row.wait);
    uint32_t value = kUntouched;
    EXPECT_EQ(answer(kxTavroAcquireStatus(image, &value, &status, system)), row.status);
    EXPECT_EQ(value, row.acqStatus);
    if (k.live == Live::kThisImage) {
      EXPECT_EQ(answer(kxTavroLiveAcquire(image, 0, 7, &status, system)),
                k.id == 2 ? kAnswersZero : int64_t{ACQERR_NO_CAMERA})
          << "a live stop of a camera without an object has nothing to stop";
    }
  }
  oxel::Library::Close();
  oxel::core::DeviceManager::Instance().Reset(true);
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
  EXPECT_EQ(kxTavroSetup(0, nullptr, &width, &width, nullptr), -1);
  EXPECT_EQ(kxTavroSetup(0, nullptr, &width, nullptr, system), -1);
  EXPECT_EQ(kxTavroSetup(0, nullptr, nullptr, &width, system), -1);
  EXPECT_EQ(system->lMagic, TAVRO_SYSTEM_MAGIC) << "a refused setup writes nothing";
  EXPECT_EQ(_kxTavroOrder(system, nullptr), 0);
  EXPECT_EQ(_kxTavroOrder(nullptr, nullptr), 0);
  EXPECT_EQ(system->tSlot[0].yAttached, 1u);
}

TEST(EntryChecks, NoExceptionLeavesAnEntryPoint) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(host_interface::RunGuarded("kxTavroAcquire", -1,
                                       []() -> int32_t { throw std::runtime_error("boom"); }),
            -1);
  EXPECT_EQ(host_interface::RunGuarded("_kxTavroOrder", 0, []() -> int32_t { throw 42; }), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "kxTavroAcquire: boom\n_kxTavroOrder: unknown exception\n");
}

}  // namespace
}  // namespace tavro::testing
