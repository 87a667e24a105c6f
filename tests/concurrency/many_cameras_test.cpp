// Sixteen host threads on sixteen cameras at once, as the host guide allows:
// every thread calls only for its own camera, one more thread polls the
// status of any image beside them, and camera 0 runs live while the others
// take single images (each of which stops that live run, as it must). The
// mix per thread: waiting acquisitions, acquisitions collected by status and
// wait, line-0 acquisitions, detach with and without a pending image and
// re-attach by attach or by acquire. Every image delivered holds the frame
// its request asked for, every call answers as it would alone, and the host
// hears of every acquisition exactly once.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "oxel_sim.h"
#include "support/frame_check.h"
#include "support/plugin_host.h"

namespace tavro::testing {
namespace {

constexpr int kCameras = TAVRO_MAX_CAMERAS;
constexpr int kLiveCamera = 0;
constexpr int kRounds = 24;
constexpr int32_t kWidth = 48;
constexpr int32_t kHeight = 20;

// pfnAcqFinished calls per camera; the user value carries the camera.
std::array<std::atomic<uint32_t>, kCameras> reported;

int32_t CountFinished(CamImage*, uint32_t userValue) {
  ++reported.at(userValue >> 24);
  return 0;
}

std::string DeviceId(int n) {
  return "MT-" + std::to_string(n);
}
std::string Model(int n) {
  return "MT" + std::to_string(100 + n);
}
bool IsColour(int n) {
  return n % 2 == 1;
}

// Small cameras, half of them colour, with the simulator's real timing or
// with every frame at its trigger.
std::string Producer(bool instant) {
  std::vector<std::string> cameras;
  for (int n = 0; n < kCameras; ++n) {
    cameras.push_back(R"({"id": ")" + DeviceId(n) + R"(", "model": ")" + Model(n) +
                      R"(", "sensor": {"width": 48, "height": 20}, "maxFrameRate": 1000,)" +
                      R"( "instantFrames": )" + (instant ? "true" : "false") +
                      (IsColour(n) ? R"(, "pixelFormats": ["BGR8", "Mono8"]})" : "}"));
  }
  return ProducerFile(cameras);
}

// One camera's host thread and what it expects.
struct CameraThread {
  int number = 0;
  std::string deviceId;
  std::unique_ptr<LiveImage> image;
  uint32_t expectedReports = 0;
  uint32_t sequence = 0;

  uint32_t NextUserValue() { return static_cast<uint32_t>(number) << 24 | ++sequence; }
  uint64_t LastFrame() const {
    uint64_t id = 0;
    EXPECT_EQ(OxelSim_GetLastFrameId(deviceId.c_str(), &id), 0) << deviceId;
    return id;
  }
  ::testing::AssertionResult HoldsLastFrame() const {
    return HoldsFrame(*image, IsColour(number), LastFrame());
  }
};

class ManyCameras : public PluginHost, public ::testing::WithParamInterface<bool> {
 protected:
  uint32_t Call(int32_t result, uint32_t word, const char* what, const CameraThread& t) {
    EXPECT_EQ(result, 0) << what << " on camera " << t.number << ", status 0x" << std::hex << word;
    return word;
  }

  void AcquireAndCheck(CameraThread& t, uint32_t wait) {
    uint32_t word = 0;
    const int32_t result =
        plugin.acquire(&t.image->image, wait, t.NextUserValue(), &word, system.get());
    Call(result, word, wait != 0 ? "waiting acquire" : "acquire", t);
    if (wait == 0) {
      uint32_t value = 0;
      Call(plugin.acquireStatus(&t.image->image, &value, &word, system.get()), word, "status", t);
      EXPECT_EQ(value, uint32_t{ACQSTATUS_ACQUIRING}) << "camera " << t.number;
      if (t.image->info.yHwTrigger != 0) {
        EXPECT_EQ(OxelSim_PulseLine0(t.deviceId.c_str()), 0);
      }
      Call(plugin.waitAcquire(&t.image->image, 0, 0, &word, system.get()), word, "wait", t);
    }
    ++t.expectedReports;
    EXPECT_TRUE(t.HoldsLastFrame()) << "camera " << t.number;
  }

  void DetachAndComeBack(CameraThread& t, bool pending, bool byAttach) {
    uint32_t word = 0;
    if (pending) {
      Call(plugin.acquire(&t.image->image, 0, t.NextUserValue(), &word, system.get()), word,
           "acquire", t);
      ++t.expectedReports;  // the detach reports it, unfilled
    }
    EXPECT_EQ(plugin.detach(system.get(), t.number), 0) << "camera " << t.number;
    if (byAttach) {
      EXPECT_EQ(plugin.attach(system.get(), t.number), 0) << "camera " << t.number;
    } else {
      AcquireAndCheck(t, 1);  // re-attaches first
    }
  }

  void LiveRun(CameraThread& t) {
    uint32_t word = 0;
    Call(plugin.liveAcquire(&t.image->image, 1, t.NextUserValue(), &word, system.get()), word,
         "live start", t);
    // Any other thread's acquisition may end the run at any moment, so the
    // frames are not counted on; the image is checked once live is over.
    t.image->ClearNewFrameFlag();
    t.image->WaitForNewFrame(std::chrono::seconds(1));
    Call(plugin.liveAcquire(&t.image->image, 0, 0, &word, system.get()), word, "live stop", t);
    EXPECT_TRUE(t.HoldsLastFrame()) << "live camera";
  }

  void Run(CameraThread& t) {
    std::mt19937 random(static_cast<uint32_t>(1000 + t.number));
    AcquireAndCheck(t, 1);
    for (int round = 0; round < kRounds; ++round) {
      const uint32_t pick = random() % (t.number == kLiveCamera ? 7 : 6);
      switch (pick) {
        case 0:
        case 1:
          AcquireAndCheck(t, 1);
          break;
        case 2:
          AcquireAndCheck(t, 0);
          break;
        case 3:
          t.image->info.yHwTrigger = 1;
          AcquireAndCheck(t, 0);
          t.image->info.yHwTrigger = 0;
          break;
        case 4:
          DetachAndComeBack(t, random() % 2 == 0, random() % 2 == 0);
          break;
        case 5:
          DetachAndComeBack(t, false, true);
          break;
        default:
          LiveRun(t);
          break;
      }
    }
  }

  // Any image's status from a thread of its own, answered at once with a
  // value that can be true of it.
  static void Poll(const tavro_host::Plugin& plugin, std::vector<CameraThread>& threads,
                   SystemRecord* system, const std::atomic<bool>& done) {
    std::mt19937 random(7);
    while (!done) {
      CameraThread& t = threads[random() % threads.size()];
      uint32_t value = 99, word = 0;
      const int32_t result = plugin.acquireStatus(&t.image->image, &value, &word, system);
      if (result == 0) {
        EXPECT_TRUE(value == ACQSTATUS_IDLE || value == ACQSTATUS_ACQUIRING ||
                    (value == ACQSTATUS_LIVE && t.number == kLiveCamera))
            << "camera " << t.number << " status " << value;
      } else {
        EXPECT_EQ(word, uint32_t{ACQERR_NO_IMAGE}) << "camera " << t.number;  // detached now
      }
      std::this_thread::yield();
    }
  }
};

TEST_P(ManyCameras, EachThreadOnItsOwnCamera) {
  UseProducers({Producer(GetParam())});
  system = std::make_unique<SystemRecord>();
  system->pfnAcqFinished = CountFinished;
  for (auto& count : reported) count = 0;
  ASSERT_EQ(Setup(nullptr), 0);
  ASSERT_EQ(system->iNumCams, kCameras);

  std::vector<CameraThread> threads(kCameras);
  for (int n = 0; n < kCameras; ++n) {
    CameraThread& t = threads[static_cast<size_t>(n)];
    t.number = n;
    ASSERT_EQ(std::string(system->tCam[n].szCamKey), Model(n)) << "cameras in file order";
    t.deviceId = DeviceId(n);
    t.image = std::make_unique<LiveImage>(static_cast<int16_t>(n), kWidth, kHeight, IsColour(n));
  }

  std::atomic<bool> done{false};
  // (the plug-in writes its messages from every thread)
  std::thread poller(Poll, std::cref(plugin), std::ref(threads), system.get(), std::cref(done));
  std::vector<std::thread> hosts;
  for (CameraThread& t : threads) hosts.emplace_back([this, &t] { Run(t); });
  for (std::thread& host : hosts) host.join();
  done = true;
  poller.join();

  for (const CameraThread& t : threads) {
    EXPECT_EQ(reported[static_cast<size_t>(t.number)], t.expectedReports) << "camera " << t.number;
    EXPECT_TRUE(t.image->GuardsIntact()) << "camera " << t.number;
  }
  EXPECT_EQ(system->yLive, 0u);
}

INSTANTIATE_TEST_SUITE_P(Timing, ManyCameras, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Instant" : "Timed"; });

}  // namespace
}  // namespace tavro::testing
