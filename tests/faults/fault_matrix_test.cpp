// Fault matrix: one simulated fault at one point of a host's session, per
// row of one table, with what the call under the fault answers and what the
// next healthy acquisition then gives. The cameras are small and send their
// frames at once, so only rows whose fault is a time-out wait for one.
#include <chrono>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr SimCamera kCam{"FM-1", "FM"};
constexpr int32_t kWidth = 32;
constexpr int32_t kHeight = 16;

// Where in the session the fault strikes, and so which call is judged.
enum class Point {
  kBeforeSetup,            // judged: setup (result; status = cameras found)
  kBeforeAcquire,          // judged: acquire with wait
  kBetweenAcquireAndWait,  // acquire without wait succeeds; judged: the wait
  kDuringLive,             // live runs; judged: status query, then the live stop
  kBeforeLiveStart,        // judged: live start
  kBeforeDetach,           // judged: detach
  kBeforeAttach,           // detached first; judged: attach
  kBeforeOrder,            // detached first; judged: order wanting it (attached after?)
  kBeforeTearDown,         // judged: teardown
};

enum class Producer { kGood, kMissing, kEmpty, kGarbage };

struct Cell {
  const char* name;
  Point point;
  std::function<void()> fault;
  int32_t result;   // of the judged call
  uint32_t status;  // its status word (setup: cameras found; order: slot attached)
  Producer producer = Producer::kGood;
};

// Test logs name the row rather than dump its bytes.
void PrintTo(const Cell& cell, std::ostream* out) {
  *out << cell.name;
}

void Unplug() {
  OxelSim_UnplugCamera(kCam.id);
}
// The feature's next write is refused; a retry would succeed.
std::function<void()> RefuseWrite(const char* feature) {
  return [feature] { OxelSim_FailFeatureWrites(kCam.id, feature, 1, OXEL_RETURN_CODE_ERROR); };
}
// Every write of the feature is refused until healed.
std::function<void()> RefuseWrites(const char* feature) {
  return [feature] { OxelSim_FailFeatureWrites(kCam.id, feature, -1, OXEL_RETURN_CODE_ERROR); };
}

// Every row: expected result and status of the call under the fault. The
// healthy acquisition after each row must deliver its own frame.
const std::vector<Cell>& Matrix() {
  static const std::vector<Cell> cells = {
      // Producer files and setup.
      {"MissingProducerFile", Point::kBeforeSetup, nullptr, -1, 0, Producer::kMissing},
      {"EmptyProducerFile", Point::kBeforeSetup, nullptr, -1, 0, Producer::kEmpty},
      {"GarbageProducerFile", Point::kBeforeSetup, nullptr, -1, 0, Producer::kGarbage},
      {"UnplugBeforeSetup", Point::kBeforeSetup, Unplug, -1, 0},
      {"OpenedElsewhereAtSetup", Point::kBeforeSetup,
       [] { OxelSim_SetOpenedElsewhere(kCam.id, 1); }, -1, 0},
      {"TriggerModeRefusedAtSetup", Point::kBeforeSetup, RefuseWrites("TriggerMode"), 0, 0},
      {"ExposureRefusedAtSetup", Point::kBeforeSetup, RefuseWrite("ExposureTime"), 0, 1},
      // A single acquisition.
      {"UnplugBeforeAcquire", Point::kBeforeAcquire, Unplug, -1, 0},
      {"DroppedFrame", Point::kBeforeAcquire, [] { OxelSim_DropFrames(kCam.id, 1); }, -1,
       ACQERR_WAIT_TIMEOUT},
      {"LateFrameWithinTimeOut", Point::kBeforeAcquire, [] { OxelSim_DelayFrames(kCam.id, 1, 50); },
       0, 0},
      {"LateFramePastTimeOut", Point::kBeforeAcquire, [] { OxelSim_DelayFrames(kCam.id, 1, 3500); },
       -1, ACQERR_WAIT_TIMEOUT},
      {"IncompleteFrame", Point::kBeforeAcquire, [] { OxelSim_IncompleteFrames(kCam.id, 1); }, -1,
       ACQERR_WAIT_FAILED},
      {"StreamStartRefused", Point::kBeforeAcquire,
       [] { OxelSim_FailStreamStarts(kCam.id, 1, OXEL_RETURN_CODE_ERROR); }, -1, 0},
      {"AcquisitionStartRefused", Point::kBeforeAcquire, RefuseWrite("AcquisitionStart"), -1, 0},
      {"TriggerSoftwareRefused", Point::kBeforeAcquire, RefuseWrite("TriggerSoftware"), -1, 0},
      {"TransportLockRefused", Point::kBeforeAcquire, RefuseWrite("TLParamsLocked"), -1, 0},
      {"OffsetXRefused", Point::kBeforeAcquire, RefuseWrite("OffsetX"), 0, 0},
      {"WidthRefused", Point::kBeforeAcquire, RefuseWrite("Width"), 0, 0},
      {"ExposureRefused", Point::kBeforeAcquire, RefuseWrite("ExposureTime"), 0, 0},
      {"GainRefused", Point::kBeforeAcquire, RefuseWrite("Gain"), 0, 0},
      {"UnplugBetweenAcquireAndWait", Point::kBetweenAcquireAndWait, Unplug, -1,
       ACQERR_WAIT_FAILED},
      // Live acquisition.
      {"UnplugDuringLive", Point::kDuringLive, Unplug, 0, 0},
      {"DroppedFramesDuringLive", Point::kDuringLive, [] { OxelSim_DropFrames(kCam.id, -1); }, 0,
       0},
      {"TriggerRefusedDuringLive", Point::kDuringLive,
       [] { OxelSim_FailFeatureWrites(kCam.id, "TriggerSoftware", -1, OXEL_RETURN_CODE_ERROR); }, 0,
       0},
      {"StreamStartRefusedAtLiveStart", Point::kBeforeLiveStart,
       [] { OxelSim_FailStreamStarts(kCam.id, 1, OXEL_RETURN_CODE_ERROR); }, -1, 0},
      {"AcquisitionStartRefusedAtLiveStart", Point::kBeforeLiveStart,
       RefuseWrite("AcquisitionStart"), -1, 0},
      // Detach, attach, order, teardown.
      {"UnplugBeforeDetach", Point::kBeforeDetach, Unplug, 0, 0},
      {"UnplugBeforeAttach", Point::kBeforeAttach, Unplug, -1, 0},
      {"UnplugBeforeOrder", Point::kBeforeOrder, Unplug, 0, 0},
      {"TriggerModeRefusedAtOrder", Point::kBeforeOrder, RefuseWrites("TriggerMode"), 0, 0},
      {"UnplugBeforeTearDown", Point::kBeforeTearDown, Unplug, 0, 0},
  };
  return cells;
}

class FaultMatrix : public PluginHost, public ::testing::WithParamInterface<Cell> {
 protected:
  void UseProducer(Producer producer) {
    switch (producer) {
      case Producer::kGood:
        UseProducers({ProducerFile({SmallCamera(kCam.id, kCam.key, R"("instantFrames": true)")})});
        break;
      case Producer::kMissing:
        UseProducers({});
        break;
      case Producer::kEmpty:
        UseProducers({""});
        break;
      case Producer::kGarbage:
        UseProducers({"{\"system\": [not json"});
        break;
    }
  }

  void Heal() {
    OxelSim_ReplugCamera(kCam.id);
    OxelSim_SetOpenedElsewhere(kCam.id, 0);
    OxelSim_DropFrames(kCam.id, 0);
    OxelSim_DelayFrames(kCam.id, 0, 0);
    OxelSim_IncompleteFrames(kCam.id, 0);
    OxelSim_FailStreamStarts(kCam.id, 0, OXEL_RETURN_CODE_ERROR);
    for (const char* feature : {"TriggerMode", "ExposureTime", "Gain", "OffsetX", "Width",
                                "AcquisitionStart", "TriggerSoftware", "TLParamsLocked"}) {
      OxelSim_FailFeatureWrites(kCam.id, feature, 0, OXEL_RETURN_CODE_ERROR);
    }
  }

  // Sets the system up on the one small camera with the healthy file.
  void SetupHealthy() {
    system = std::make_unique<SystemRecord>();
    system->pfnAcqFinished = [](CamImage*, uint32_t) { return int32_t{0}; };
    ASSERT_EQ(Setup(nullptr), 0);
    ASSERT_EQ(system->iNumCams, 1);
  }

  // Live runs until the camera has sent a frame to the live image.
  void StartLive(LiveImage& image) {
    ASSERT_EQ(Live(image, 1, 5), 0);
    ASSERT_TRUE(image.WaitForNewFrame());
  }

  // Waits, within a bound, until the live image's status leaves 1.
  int64_t LiveStatusAfterFault(LiveImage& image) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    int64_t value = Status(image);
    while (value == ACQSTATUS_LIVE && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::yield();
      value = Status(image);
    }
    return value;
  }

  // The judged call of the row; writes its result and status word.
  void RunPoint(const Cell& cell, int32_t* result, uint32_t* bits) {
    HostImage image(0, kWidth, kHeight, false);
    LiveImage live(0, kWidth, kHeight, false);
    if (cell.point == Point::kBeforeSetup) {
      if (cell.fault) cell.fault();
      system = std::make_unique<SystemRecord>();
      *result = Setup(nullptr);
      *bits = static_cast<uint32_t>(system->iNumCams);
      return;
    }
    SetupHealthy();
    switch (cell.point) {
      case Point::kBeforeAcquire:
        // A rectangle of its own, so that the acquisition writes the AOI.
        image.SetAoi(8, 2, 24, 12);
        cell.fault();
        *result = Acquire(image, 1, 1);
        *bits = status;
        break;
      case Point::kBetweenAcquireAndWait:
        ASSERT_EQ(Acquire(image, 0, 1), 0);
        cell.fault();
        *result = Wait(image);
        *bits = status;
        break;
      case Point::kDuringLive:
        StartLive(live);
        cell.fault();
        // A live run that dies says so through the live image's status.
        EXPECT_EQ(LiveStatusAfterFault(live), ACQSTATUS_IDLE);
        *result = Live(live, 0);
        *bits = status;
        EXPECT_EQ(system->yLive, 0u);
        break;
      case Point::kBeforeLiveStart:
        cell.fault();
        *result = Live(live, 1, 5);
        *bits = status;
        Live(live, 0);
        break;
      case Point::kBeforeDetach:
        cell.fault();
        *result = Detach(0);
        *bits = 0;
        break;
      case Point::kBeforeAttach:
        ASSERT_EQ(Detach(0), 0);
        cell.fault();
        *result = Attach(0);
        *bits = 0;
        break;
      case Point::kBeforeOrder: {
        ASSERT_EQ(Detach(0), 0);
        cell.fault();
        std::vector<CameraRecord> wanted(TAVRO_MAX_CAMERAS);
        for (int i = 0; i < TAVRO_MAX_CAMERAS; ++i) wanted[i].iCamNum = i;
        std::memcpy(wanted[0].szCamKey, system->tCam[0].szCamKey, sizeof wanted[0].szCamKey);
        wanted[0].yEnabled = 1;
        *result = plugin.order(system.get(), wanted.data());
        *bits = system->tSlot[0].yAttached;
        break;
      }
      case Point::kBeforeTearDown:
        cell.fault();
        *result = TearDownSystem();
        *bits = 0;
        break;
      case Point::kBeforeSetup:
        break;
    }
  }
};

TEST_P(FaultMatrix, AnswersAsTabledAndTheNextHealthyAcquisitionDeliversItsFrame) {
  const Cell& cell = GetParam();
  UseProducer(cell.producer);
  int32_t result = 99;
  uint32_t bits = 0xDEAD;
  RunPoint(cell, &result, &bits);
  if (HasFatalFailure()) return;
  EXPECT_EQ(result, cell.result);
  EXPECT_EQ(bits, cell.status);

  // Healed, the camera works at once, even one whose session the fault
  // ended: after a teardown or a failed setup a new setup, otherwise the
  // same system; the acquisition re-attaches a camera that went away.
  Heal();
  UseProducer(Producer::kGood);
  if (system->lMagic != TAVRO_SYSTEM_MAGIC || cell.point == Point::kBeforeTearDown ||
      system->iNumCams != 1) {
    if (cell.point != Point::kBeforeTearDown) TearDownSystem();
    SetupHealthy();
  }
  HostImage image(0, kWidth, kHeight, false);
  EXPECT_EQ(Acquire(image, 1, 2), 0) << "status " << status;
  EXPECT_EQ(status, 0u);
  EXPECT_TRUE(HoldsFrame(image, false, LastFrameId(kCam)));
}

INSTANTIATE_TEST_SUITE_P(Cells, FaultMatrix, ::testing::ValuesIn(Matrix()),
                         [](const ::testing::TestParamInfo<Cell>& info) {
                           return std::string(info.param.name);
                         });

}  // namespace
}  // namespace tavro::testing
