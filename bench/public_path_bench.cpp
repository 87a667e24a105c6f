// What a host pays per frame through the nine entry points: libtavro.so
// loaded with dlopen, the bundled colour camera set to finish each frame at
// its trigger, and host planes of full size or of 16 x 2 pixels. The camera
// sends the whole frame either way, so the difference between the two is
// the plug-in's delivery; each row times a memcpy of the camera's frame in
// the same loop, so that ratios read off one row even on a busy machine.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "camera/pixel_conversion.h"
#include "host/host_image.h"
#include "host/plugin.h"
#include "host/records.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t kWidth = 1936;
constexpr int32_t kHeight = 1216;
constexpr size_t kFrameBytes = size_t{kWidth} * kHeight * 3;

// A producer directory holding the bundled colour camera alone, with
// "instantFrames" set, named by GENICAM_GENTL64_PATH; removed at exit.
class InstantCamera {
 public:
  InstantCamera() {
    std::ifstream in(TAVRO_SOURCE_DIR "/sim/producers/oxel_u3v.cti");
    nlohmann::json producer = nlohmann::json::parse(in);
    nlohmann::json& cameras = producer["system"]["interfaces"][0]["cameras"];
    nlohmann::json colour;
    for (const nlohmann::json& camera : cameras) {
      if (camera["sensor"]["width"] == kWidth && camera["sensor"]["height"] == kHeight) {
        colour = camera;
      }
    }
    if (colour.is_null()) throw std::runtime_error("no bundled 1936 x 1216 camera");
    colour["instantFrames"] = true;
    key_ = colour["model"].get<std::string>() + "-" + colour["userDefinedName"].get<std::string>();
    cameras = nlohmann::json::array({colour});

    std::string pattern = std::filesystem::temp_directory_path() / "tavro-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
    directory_ = pattern;
    std::ofstream(directory_ / "instant.cti") << producer.dump(2);
    setenv("GENICAM_GENTL64_PATH", directory_.c_str(), 1);
  }
  ~InstantCamera() { std::filesystem::remove_all(directory_); }
  const std::string& key() const { return key_; }

 private:
  std::filesystem::path directory_;
  std::string key_;
};

// Keeps the plug-in's diagnostic lines out of the benchmark table while it
// lives.
class QuietStdout {
 public:
  QuietStdout() : saved_(dup(STDOUT_FILENO)) {
    std::fflush(stdout);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    close(null);
  }
  ~QuietStdout() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
  QuietStdout(const QuietStdout&) = delete;
  QuietStdout& operator=(const QuietStdout&) = delete;

 private:
  int saved_;
};

// The set-up camera system, torn down quietly at exit.
struct QuietSystem {
  explicit QuietSystem(const std::string& key) : system(Start(key)) {}
  ~QuietSystem() {
    const QuietStdout quiet;
    system.reset();
  }
  static std::unique_ptr<tavro_host::CameraSystem> Start(const std::string& key) {
    const QuietStdout quiet;
    return std::make_unique<tavro_host::CameraSystem>(tavro_host::LoadPlugin(), key);
  }
  std::unique_ptr<tavro_host::CameraSystem> system;
};

// Set up once for the process, as a host does; torn down at exit.
tavro_host::CameraSystem& System() {
  static const InstantCamera camera;
  static const QuietSystem system(camera.key());
  return *system.system;
}

const tavro_host::Plugin& Plugin() {
  return tavro_host::LoadPlugin();
}

double Microseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::micro>(duration).count();
}

double Median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// A memcpy of one camera frame, timed; the copy is kept so that it stays.
class FrameCopy {
 public:
  FrameCopy() : from_(kFrameBytes, 1), to_(kFrameBytes) {}
  double Time() {
    const auto start = Clock::now();
    std::memcpy(to_.data(), from_.data(), kFrameBytes);
    benchmark::DoNotOptimize(to_.data());
    benchmark::ClobberMemory();
    return Microseconds(Clock::now() - start);
  }

 private:
  std::vector<uint8_t> from_, to_;
};

// The conversion kernel alone on a frame of the same size into planes of
// the same size, timed; the public path's delivery is compared with it.
class KernelOnly {
 public:
  explicit KernelOnly(bool colour)
      : frame_(kFrameBytes),
        grey_(size_t{kWidth} * kHeight),
        red_(grey_.size()),
        green_(grey_.size()),
        blue_(grey_.size()),
        colour_(colour) {
    for (size_t i = 0; i < frame_.size(); ++i) frame_[i] = static_cast<uint8_t>(i * 31 + (i >> 11));
  }
  double Time() {
    const tavro::camera::SourceFrame frame{frame_.data(), frame_.size(), kWidth, kHeight, true};
    const tavro::camera::HostPlanes planes{grey_.data(), red_.data(), green_.data(), blue_.data(),
                                           kWidth,       kHeight,     kWidth,        colour_};
    const auto start = Clock::now();
    tavro::camera::ConvertFrame(frame, planes,
                                tavro::camera::DeliveryRegion(frame, planes, kWidth, kHeight));
    benchmark::DoNotOptimize(grey_.data());
    benchmark::ClobberMemory();
    return Microseconds(Clock::now() - start);
  }

 private:
  std::vector<uint8_t> frame_, grey_, red_, green_, blue_;
  bool colour_;
};

void Acquire(CamImage& image, tavro_host::CameraSystem& system) {
  uint32_t status = 0;
  if (Plugin().acquire(&image, 1, 0, &status, &system.record()) != 0) {
    throw std::runtime_error("acquisition failed, status " + std::to_string(status));
  }
}

// Per iteration: one acquisition into full-size planes (the time of the
// row), one into a 16 x 2 grey plane, one memcpy of the frame and one run
// of the conversion kernel alone.
void PublicAcquire(benchmark::State& state, bool colour) {
  tavro_host::CameraSystem& system = System();
  tavro_host::HostImage full(0, kWidth, kHeight, colour);
  tavro_host::HostImage tiny(0, 16, 2, false);
  FrameCopy copy;
  KernelOnly kernel(colour);
  std::vector<double> fullTimes, tinyTimes, copyTimes, kernelTimes;
  for (auto _ : state) {
    const auto start = Clock::now();
    Acquire(full.image, system);
    const auto fullDone = Clock::now();
    Acquire(tiny.image, system);
    tinyTimes.push_back(Microseconds(Clock::now() - fullDone));
    fullTimes.push_back(Microseconds(fullDone - start));
    copyTimes.push_back(copy.Time());
    kernelTimes.push_back(kernel.Time());
    state.SetIterationTime(std::chrono::duration<double>(fullDone - start).count());
  }
  const double fullUs = Median(fullTimes), tinyUs = Median(tinyTimes), copyUs = Median(copyTimes),
               kernelUs = Median(kernelTimes);
  state.counters["full_us"] = fullUs;
  state.counters["tiny_us"] = tinyUs;
  state.counters["delivery_us"] = fullUs - tinyUs;
  state.counters["memcpy_us"] = copyUs;
  state.counters["kernel_us"] = kernelUs;
  state.counters["delivery_x_memcpy"] = (fullUs - tinyUs) / copyUs;
  state.counters["delivery_x_kernel"] = (fullUs - tinyUs) / kernelUs;
}

void BM_PublicAcquireBgr8IntoGreyAndColour(benchmark::State& state) {
  PublicAcquire(state, true);
}
void BM_PublicAcquireBgr8IntoGrey(benchmark::State& state) {
  PublicAcquire(state, false);
}

// Waits for the plug-in's worker to report a frame, and takes the report.
void TakeNewFrame(tavro_host::LiveImage& live) {
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  while (!live.TakeNewFrame()) {
    if (Clock::now() > deadline) throw std::runtime_error("no live frame within 10 s");
    std::this_thread::yield();
  }
}

// Live acquisition into full-size planes and the display: one iteration per
// frame the host is told about. The memcpy is timed before the run, so that
// it does not take memory bandwidth from the worker.
void PublicLive(benchmark::State& state, bool colour) {
  tavro_host::CameraSystem& system = System();
  tavro_host::LiveImage live(0, kWidth, kHeight, colour);
  FrameCopy copy;
  std::vector<double> copyTimes;
  for (int k = 0; k < 21; ++k) copyTimes.push_back(copy.Time());
  uint32_t status = 0;
  if (Plugin().liveAcquire(&live.image, 1, 0, &status, &system.record()) != 0) {
    state.SkipWithError("live start failed");
    return;
  }
  TakeNewFrame(live);  // the first frame carries the start-up
  const auto start = Clock::now();
  for (auto _ : state) TakeNewFrame(live);
  const double elapsedUs = Microseconds(Clock::now() - start);
  Plugin().liveAcquire(&live.image, 0, 0, &status, &system.record());
  const double frameUs = elapsedUs / static_cast<double>(state.iterations());
  state.counters["fps"] = 1e6 / frameUs;
  state.counters["memcpy_us"] = Median(copyTimes);
  state.counters["frame_x_memcpy"] = frameUs / Median(copyTimes);
}

void BM_PublicLiveColourDisplay(benchmark::State& state) {
  PublicLive(state, true);
}
void BM_PublicLiveGreyDisplay(benchmark::State& state) {
  PublicLive(state, false);
}

BENCHMARK(BM_PublicAcquireBgr8IntoGreyAndColour)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PublicAcquireBgr8IntoGrey)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PublicLiveColourDisplay)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PublicLiveGreyDisplay)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
