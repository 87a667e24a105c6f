// Soak run: drives libtavro.so as a host for a long time and prints the
// process's resident memory, threads and open files as it goes, so that a
// leak of any of them shows as a rising column.
//
//   tavro_soak [live frames] [detach cycles] [setup cycles]
//   (defaults 100000, 1000, 1000)
//
// One small simulated camera streams live until the camera has sent the
// frames asked for; then the camera is detached and re-attached, with one
// image taken after each re-attach; then the whole system is set up and torn
// down, with one image per setup. Each phase prints its start, middle and end.
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "host/plugin.h"
#include "oxel_sim.h"
#include "tavro/tavro_host.h"

namespace {

constexpr const char* kCameraId = "SOAK-1";
constexpr int kWidth = 64;
constexpr int kHeight = 48;

const char* const kProducer = R"({"system": {"id": "Soak", "interfaces": [{"id": "Bus", "cameras": [
  {"id": "SOAK-1", "model": "SOAK", "instantFrames": true, "sensor": {"width": 64, "height": 48}}]}]}})";

struct Usage {
  long rssKb = -1;
  long threads = -1;
  long files = 0;
};

Usage Measure() {
  Usage usage;
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line)) {
    if (line.rfind("VmRSS:", 0) == 0) usage.rssKb = std::strtol(line.c_str() + 6, nullptr, 10);
    if (line.rfind("Threads:", 0) == 0) usage.threads = std::strtol(line.c_str() + 8, nullptr, 10);
  }
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++usage.files;
  }
  return usage;
}

void Print(const char* phase, const char* point, long done) {
  const Usage usage = Measure();
  std::fprintf(stderr, "%-16s %-6s %8ld   rss %7ld kB   threads %3ld   open files %3ld\n", phase,
               point, done, usage.rssKb, usage.threads, usage.files);
}

uint64_t LastFrameId() {
  uint64_t id = 0;
  return OxelSim_GetLastFrameId(kCameraId, &id) == 0 ? id : 0;
}

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "tavro_soak: %s\n", what.c_str());
  std::exit(1);
}

// A host image with a live display, as the host lays it out.
struct Image {
  std::vector<uint8_t> pixels = std::vector<uint8_t>(kWidth * kHeight);
  std::vector<uint32_t> display = std::vector<uint32_t>(kWidth * kHeight);
  PlaneInfo plane{};
  LiveBuffer live{};
  HostDisplay hostDisplay{};
  HostView view{};
  CameraInfo info{};
  CamImage image{};

  Image() {
    plane.pBits = pixels.data();
    plane.iWidth = kWidth;
    plane.iHeight = kHeight;
    plane.iPitch = kWidth;
    live.plPixels = display.data();
    live.iStride = kWidth;
    view.ptDisplay = &hostDisplay;
    info.ptHostView = &view;
    image.lMagic = TAVRO_IMAGE_MAGIC;
    image.ptCamera = &info;
    image.ptPlane = &plane;
    image.ptLiveBuffer = &live;
  }
};

class Soak {
 public:
  Soak() : plugin_(tavro_host::LoadPlugin()) {}

  void Setup() {
    *system_ = SystemRecord{};
    int width = 0, height = 0;
    if (plugin_.setup(0, nullptr, &width, &height, system_.get()) != 0 || system_->iNumCams != 1) {
      Fail("setup failed");
    }
  }
  void TearDown() {
    if (plugin_.tearDown(system_.get()) != 0) Fail("teardown failed");
  }
  void Acquire() {
    uint32_t status = 0;
    if (plugin_.acquire(&image_.image, 1, 0, &status, system_.get()) != 0) {
      Fail("acquire failed with status " + std::to_string(status));
    }
  }

  void Live(long frames) {
    uint32_t status = 0;
    const uint64_t first = LastFrameId();
    if (plugin_.liveAcquire(&image_.image, 1, 0, &status, system_.get()) != 0) {
      Fail("live start failed with status " + std::to_string(status));
    }
    bool middle = false;
    for (;;) {
      const long done = static_cast<long>(LastFrameId() - first);
      if (!middle && done >= frames / 2) {
        Print("live frames", "middle", done);
        middle = true;
      }
      if (done >= frames) break;
      if (system_->yLive == 0) Fail("live acquisition ended by itself");
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (plugin_.liveAcquire(&image_.image, 0, 0, &status, system_.get()) != 0) {
      Fail("live stop failed with status " + std::to_string(status));
    }
    Print("live frames", "end", static_cast<long>(LastFrameId() - first));
  }

  void DetachCycles(long cycles) {
    for (long k = 1; k <= cycles; ++k) {
      if (plugin_.detach(system_.get(), 0) != 0) Fail("detach failed");
      if (plugin_.attach(system_.get(), 0) != 0) Fail("attach failed");
      Acquire();
      if (k == cycles / 2) Print("detach/attach", "middle", k);
    }
    Print("detach/attach", "end", cycles);
  }

  void SetupCycles(long cycles) {
    TearDown();
    for (long k = 1; k <= cycles; ++k) {
      Setup();
      Acquire();
      TearDown();
      if (k == cycles / 2) Print("setup/teardown", "middle", k);
    }
    Print("setup/teardown", "end", cycles);
  }

 private:
  const tavro_host::Plugin& plugin_;
  std::unique_ptr<SystemRecord> system_ = std::make_unique<SystemRecord>();
  Image image_;
};

long Argument(int argc, char** argv, int index, long fallback) {
  return argc > index ? std::strtol(argv[index], nullptr, 10) : fallback;
}

}  // namespace

int main(int argc, char** argv) {
  const long frames = Argument(argc, argv, 1, 100000);
  const long detachCycles = Argument(argc, argv, 2, 1000);
  const long setupCycles = Argument(argc, argv, 3, 1000);

  char directory[] = "/tmp/tavro-soak-XXXXXX";
  if (mkdtemp(directory) == nullptr) Fail("cannot make the producer directory");
  std::ofstream(std::string(directory) + "/soak.cti") << kProducer;
  setenv("GENICAM_GENTL64_PATH", directory, 1);
  // The plug-in's diagnostics go to standard output; the figures to standard error.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) Fail("cannot silence standard output");

  Print("start", "", 0);
  const auto started = std::chrono::steady_clock::now();
  {
    Soak soak;
    soak.Setup();
    Print("set up", "", 0);
    soak.Live(frames);
    soak.DetachCycles(detachCycles);
    soak.SetupCycles(setupCycles);
  }
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  std::fprintf(stderr, "done in %.1f s\n", seconds);
  std::filesystem::remove_all(directory);
  return 0;
}
