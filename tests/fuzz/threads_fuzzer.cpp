// libFuzzer harness, threads mode: four host threads on four cameras at once,
// each calling only for its own camera, as the host guide allows.
//
// The plug-in is loaded and set up once per process on four small simulated
// cameras. An input is split byte by byte among the threads (byte k goes to
// thread k mod 4); each thread builds its own host images from its bytes and
// then runs its own sequence of acquisitions, waits, status queries, live
// starts and stops, detaches and attaches, parameter changes and quick
// camera faults. Between the threads they meet exactly where the guide says
// they do: any acquisition stops whichever camera runs live, a live stop
// through any image ends it, one live run at a time. After every call the
// thread checks its own guard bytes around every record and plane, and that
// results, status words and status values are documented ones; every
// finished callback names an image of the input with the user value given
// for it. The address sanitizer sees any write into freed memory (every
// input's images are new memory) and the watchdog any call that hangs.
//
// Threads interleave as the machine lets them, so an input does not always
// take the same path: a finding names its input, which usually shows the
// fault again within a few runs (TAVRO_FUZZ_TRACE=1 lists each thread's
// calls).
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "guarded_block.h"
#include "host/plugin.h"
#include "oxel_sim.h"
#include "tavro/tavro_host.h"

namespace tavro::fuzz {
namespace {

constexpr int kThreads = 4;
constexpr int kOpsPerThread = 48;
// Live stop (up to 5 s), a frame wait (3 s) and camera objects closed on
// the way; a call beyond this hangs.
constexpr auto kCallLimit = std::chrono::seconds(30);

const char* const kDeviceIds[kThreads] = {"FT-0", "FT-1", "FT-2", "FT-3"};

// Small sensors with frames at their trigger, so that only a hung call
// waits; cameras 1 and 3 send "BGR8".
const char* const kProducer = R"({
  "system": {"id": "ThreadsSystem", "interfaces": [{"id": "ThreadsBus", "cameras": [
    {"id": "FT-0", "model": "FT0", "instantFrames": true, "sensor": {"width": 32, "height": 16}},
    {"id": "FT-1", "model": "FT1", "instantFrames": true, "sensor": {"width": 24, "height": 12},
     "pixelFormats": ["BGR8", "Mono8"],
     "aoi": {"offsetXIncrement": 8, "offsetYIncrement": 2, "widthIncrement": 8,
             "heightIncrement": 2, "widthMinimum": 8, "heightMinimum": 2}},
    {"id": "FT-2", "model": "FT2", "instantFrames": true, "sensor": {"width": 16, "height": 8},
     "stream": {"minBufferCount": 4, "definesPayloadSize": false}},
    {"id": "FT-3", "model": "FT3", "instantFrames": true, "sensor": {"width": 40, "height": 10},
     "pixelFormats": ["BGR8", "Mono8"]}
  ]}]}})";

[[noreturn]] void Finding(const std::string& what) {
  std::fprintf(stderr, "tavro-fuzz-threads finding: %s\n", what.c_str());
  std::abort();
}

const bool trace = std::getenv("TAVRO_FUZZ_TRACE") != nullptr;

// ---- input ----

// The bytes of one thread: every kThreads-th byte of the input.
class Reader {
 public:
  Reader(const uint8_t* data, size_t size, size_t first) : data_(data), size_(size), at_(first) {}
  bool Empty() const { return at_ >= size_; }
  uint8_t Byte() {
    if (at_ >= size_) return 0;
    const uint8_t byte = data_[at_];
    at_ += kThreads;
    return byte;
  }

 private:
  const uint8_t* data_;
  size_t size_;
  size_t at_;
};

// ---- host images ----

struct Plane {
  GuardedBlock info{sizeof(PlaneInfo), 0};
  GuardedBlock bits;
};

// One host image of a thread, every record and plane between guards, the
// pixels exactly as large as the guide asks for the geometry given.
struct Image {
  GuardedBlock image{sizeof(CamImage), 0};
  GuardedBlock camera{sizeof(CameraInfo), 0};
  GuardedBlock view{sizeof(HostView), 0};
  GuardedBlock display{sizeof(HostDisplay), 0};
  GuardedBlock liveBuffer{sizeof(LiveBuffer), 0};
  GuardedBlock livePixels;
  std::array<Plane, 4> planes;  // grey, red, green, blue
  // The red, green and blue plane images.
  std::array<GuardedBlock, 3> colours{GuardedBlock(sizeof(CamImage), 0),
                                      GuardedBlock(sizeof(CamImage), 0),
                                      GuardedBlock(sizeof(CamImage), 0)};

  CamImage& Record() { return *image.As<CamImage>(); }
  CameraInfo& Info() { return *camera.As<CameraInfo>(); }

  void Build(Reader& in, int16_t cameraId) {
    const uint8_t shape = in.Byte();
    const int32_t width = 1 + in.Byte() % 48;
    const int32_t height = 1 + in.Byte() % 20;
    const int32_t pitch = width + (shape & 3) * 8;
    const int32_t firstRow = (shape >> 2) & 3;
    const bool colour = (shape & 0x10) != 0;
    for (int k = 0; k < (colour ? 4 : 1); ++k) {
      PlaneInfo& plane = *planes[k].info.As<PlaneInfo>();
      planes[k].bits.Reset(static_cast<size_t>(pitch) * (firstRow + height));
      plane.pBits = planes[k].bits.data();
      plane.iWidth = width;
      plane.iHeight = height;
      plane.iPitch = pitch;
      plane.iFirstRow = firstRow;
      if (k > 0) colours[k - 1].As<CamImage>()->ptPlane = &plane;
    }
    CamImage& im = Record();
    im.lMagic = TAVRO_IMAGE_MAGIC;
    im.ptCamera = &Info();
    im.ptPlane = planes[0].info.As<PlaneInfo>();
    if (colour) {
      im.ptRed = colours[0].As<CamImage>();
      im.ptGreen = colours[1].As<CamImage>();
      im.ptBlue = colours[2].As<CamImage>();
      im.qwColourDisplay = 1;
    }
    const int32_t stride = width + (shape >> 5) * 4;
    livePixels.Reset(sizeof(uint32_t) * static_cast<size_t>(stride) * (firstRow + height));
    LiveBuffer& live = *liveBuffer.As<LiveBuffer>();
    live.plPixels = livePixels.As<uint32_t>();
    live.iStride = stride;
    im.ptLiveBuffer = &live;
    if ((shape & 0x80) != 0) {
      im.yAoi = 1;
      im.iAoiLeft = in.Byte() % 40;
      im.iAoiTop = in.Byte() % 16;
      im.iAoiRight = im.iAoiLeft + 1 + in.Byte() % 40;
      im.iAoiBottom = im.iAoiTop + 1 + in.Byte() % 16;
    }
    CameraInfo& info = Info();
    info.iCamId = cameraId;
    info.yColourPlanes = colour ? 1 : 0;
    info.ptHostView = view.As<HostView>();
    view.As<HostView>()->ptDisplay = display.As<HostDisplay>();
    view.As<HostView>()->yColourDisplay = colour ? 1 : 0;
  }

  bool Intact() const {
    for (const GuardedBlock* block : {&image, &camera, &view, &display, &liveBuffer, &livePixels}) {
      if (!block->Intact()) return false;
    }
    for (const Plane& plane : planes) {
      if (!plane.info.Intact() || !plane.bits.Intact()) return false;
    }
    for (const GuardedBlock& block : colours) {
      if (!block.Intact()) return false;
    }
    return true;
  }
};

// ---- the host ----

struct Host {
  const tavro_host::Plugin* plugin = nullptr;
  std::unique_ptr<SystemRecord> system = std::make_unique<SystemRecord>();
  // This input's images: two per thread, thread t's for camera t.
  std::array<std::array<std::unique_ptr<Image>, 2>, kThreads> images;
  bool setUp = false;
};
Host host;

// Per thread: when its running call must end (0: none), and the user
// values it handed out, so that a callback can be told its own.
std::array<std::atomic<int64_t>, kThreads> deadlines{};
std::atomic<uint64_t> calls{0}, callbacks{0}, inputs{0};

int64_t Now() {
  return std::chrono::steady_clock::now().time_since_epoch().count();
}

void Watchdog() {
  for (;;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    for (int t = 0; t < kThreads; ++t) {
      const int64_t deadline = deadlines[t].load();
      if (deadline != 0 && Now() > deadline) {
        Finding("a call of thread " + std::to_string(t) + " outlasted its time limit");
      }
    }
  }
}

bool IsInputImage(const CamImage* image) {
  for (const auto& pair : host.images) {
    for (const auto& candidate : pair) {
      if (candidate && &candidate->Record() == image) return true;
    }
  }
  return false;
}

// User values carry the thread in their top byte and a count below it.
int32_t Finished(CamImage* image, uint32_t userValue) {
  ++callbacks;
  if (!IsInputImage(image)) Finding("finished callback with an image the host never gave");
  const uint32_t thread = userValue >> 24;
  if (thread >= kThreads) Finding("finished callback with a user value never given");
  const bool ownImage =
      &host.images[thread][0]->Record() == image || &host.images[thread][1]->Record() == image;
  if (!ownImage) Finding("finished callback pairs an image with another thread's user value");
  return 0;
}

// ---- calls ----

constexpr uint32_t kDocumentedStatus[] = {
    0,    ACQERR_NO_IMAGE,  ACQERR_CAMERA_OP,     ACQERR_NO_SYSTEM,    ACQERR_WAIT_FAILED,
    0x40, ACQERR_NO_CAMERA, ACQERR_NOT_ACQUIRING, ACQERR_LIVE_RUNNING,
};

class Thread {
 public:
  Thread(int number, Reader in) : number_(number), in_(in) {}

  void Run() {
    for (int op = 0; op < kOpsPerThread && !in_.Empty(); ++op) {
      const uint8_t code = in_.Byte();
      Image& image = *host.images[number_][code >> 7];
      switch (code % 11) {
        case 0:
        case 1:
          Acquire(image, code % 2 == 0);
          break;
        case 2:
          Wait(image);
          break;
        case 3:
          Status(image);
          break;
        case 4:
          Live(image, 1);
          break;
        case 5:
          Live(image, 0);
          break;
        case 6:
          Call("detach",
               [&](uint32_t*) { return host.plugin->detach(host.system.get(), number_); });
          break;
        case 7:
          Call("attach",
               [&](uint32_t*) { return host.plugin->attach(host.system.get(), number_); });
          break;
        case 8:
          SetParameter();
          break;
        case 9:
          Fault();
          break;
        default:
          LineZero(image);
          break;
      }
    }
  }

 private:
  uint32_t NextUserValue() {
    return static_cast<uint32_t>(number_) << 24 | (++sequence_ & 0xFFFFFF);
  }

  template <typename Work>
  int32_t Call(const char* what, Work work) {
    if (trace) std::fprintf(stderr, "tavro-fuzz-threads %d: %s\n", number_, what);
    uint32_t status = 0;
    deadlines[number_] =
        Now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(kCallLimit).count();
    const int32_t result = work(&status);
    deadlines[number_] = 0;
    ++calls;
    if (result != 0 && result != -1) Finding(std::string(what) + " answered neither 0 nor -1");
    bool documented = false;
    for (const uint32_t value : kDocumentedStatus) documented = documented || status == value;
    if (!documented) Finding(std::string(what) + " left an undocumented status word");
    if (result == 0 && status != 0) Finding(std::string(what) + " succeeded with status bits");
    for (const auto& image : host.images[number_]) {
      if (!image->Intact()) Finding(std::string(what) + " wrote beside the host's memory");
    }
    return result;
  }

  void Acquire(Image& image, bool wait) {
    Call(wait ? "acquire and wait" : "acquire", [&](uint32_t* status) {
      return host.plugin->acquire(&image.Record(), wait ? 1 : 0, NextUserValue(), status,
                                  host.system.get());
    });
  }
  void Wait(Image& image) {
    Call("wait", [&](uint32_t* status) {
      return host.plugin->waitAcquire(&image.Record(), 0, 0, status, host.system.get());
    });
  }
  void Status(Image& image) {
    uint32_t value = 99;
    const int32_t result = Call("status", [&](uint32_t* status) {
      return host.plugin->acquireStatus(&image.Record(), &value, status, host.system.get());
    });
    if (result == 0 && value != ACQSTATUS_IDLE && value != ACQSTATUS_LIVE &&
        value != ACQSTATUS_ACQUIRING) {
      Finding("status query answered an undocumented value");
    }
  }
  void Live(Image& image, uint32_t start) {
    Call(start != 0 ? "live start" : "live stop", [&](uint32_t* status) {
      return host.plugin->liveAcquire(&image.Record(), start, NextUserValue(), status,
                                      host.system.get());
    });
    if (start != 0) std::this_thread::sleep_for(std::chrono::microseconds(in_.Byte() * 20));
  }
  // The host writes what it wants into its own camera's parameter table.
  void SetParameter() {
    const uint8_t row = in_.Byte() % TAVRO_NUM_PARAMS;
    const int32_t value = static_cast<int8_t>(in_.Byte()) * 997;
    host.system->tCam[number_].tParam[row].iCurrent = value;
  }
  // Faults that cost no time-out: a torn frame, a refused feature write.
  void Fault() {
    static const char* const kFeatures[] = {"TriggerSoftware",  "AcquisitionStart",
                                            "AcquisitionAbort", "TLParamsLocked",
                                            "ExposureTime",     "Width"};
    const uint8_t what = in_.Byte();
    if (what % 2 == 0) {
      OxelSim_IncompleteFrames(kDeviceIds[number_], 1 + what % 3);
    } else {
      OxelSim_FailFeatureWrites(kDeviceIds[number_], kFeatures[(what >> 1) % 6], 1,
                                OXEL_RETURN_CODE_ERROR);
    }
  }
  // A line-0 acquisition whose edge comes after the call returns.
  void LineZero(Image& image) {
    image.Info().yHwTrigger = 1;
    const int32_t result = Call("line-0 acquire", [&](uint32_t* status) {
      return host.plugin->acquire(&image.Record(), 0, NextUserValue(), status, host.system.get());
    });
    if (result == 0) OxelSim_PulseLine0(kDeviceIds[number_]);
    Wait(image);
    image.Info().yHwTrigger = 0;
  }

  const int number_;
  Reader in_;
  uint32_t sequence_ = 0;
};

// ---- one input ----

// Everything that may still write into this input's images ends: the live
// run, wherever it is, and every pending image. No camera stays detached.
void Quiesce() {
  uint32_t status = 0;
  if (host.system->yLive != 0) {
    host.plugin->liveAcquire(host.system->ptLiveImage, 0, 0, &status, host.system.get());
  }
  for (int t = 0; t < kThreads; ++t) {
    for (auto& image : host.images[t]) {
      uint32_t value = 0;
      if (host.plugin->acquireStatus(&image->Record(), &value, &status, host.system.get()) == 0 &&
          value == ACQSTATUS_ACQUIRING) {
        host.plugin->waitAcquire(&image->Record(), 0, 0, &status, host.system.get());
      }
    }
    if (host.system->tSlot[t].yAttached == 0) host.plugin->attach(host.system.get(), t);
    OxelSim_IncompleteFrames(kDeviceIds[t], 0);
  }
  if (host.system->yLive != 0) Finding("live still runs after the stop");
}

void TearDownAtExit() {
  if (host.setUp) host.plugin->tearDown(host.system.get());
}

void SetUpOnce() {
  if (host.setUp) return;
  host.system->pfnAcqFinished = Finished;
  int widest = 0, highest = 0;
  if (host.plugin->setup(0, nullptr, &widest, &highest, host.system.get()) != 0 ||
      host.system->iNumCams != kThreads) {
    Finding("setup of the four cameras failed");
  }
  for (int t = 0; t < kThreads; ++t) {
    if (std::string(host.system->tCam[t].szCamKey) != "FT" + std::to_string(t)) {
      Finding("cameras out of file order");
    }
  }
  host.setUp = true;
  // Once the plug-in's statics exist, so that it runs before they go.
  std::atexit(TearDownAtExit);
}

void RunInput(const uint8_t* data, size_t size) {
  ++inputs;
  SetUpOnce();
  std::vector<Thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    Reader in(data, size, static_cast<size_t>(t));
    for (auto& image : host.images[t]) {
      image = std::make_unique<Image>();
      image->Build(in, static_cast<int16_t>(t));
    }
    threads.emplace_back(t, in);
  }
  std::vector<std::thread> running;
  for (Thread& thread : threads) running.emplace_back([&thread] { thread.Run(); });
  for (std::thread& thread : running) thread.join();
  Quiesce();
  for (int t = 0; t < kThreads; ++t) {
    for (const auto& image : host.images[t]) {
      if (!image->Intact()) Finding("a write beside the host's memory after the input");
    }
  }
}

}  // namespace
}  // namespace tavro::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  using namespace tavro::fuzz;
  if (std::getenv("TAVRO_FUZZ_VERBOSE") == nullptr) {
    std::freopen("/dev/null", "w", stdout);
  }
  char pattern[] = "/tmp/tavro-fuzz-threads-XXXXXX";
  if (mkdtemp(pattern) == nullptr) Finding("cannot make the producer directory");
  std::ofstream(std::string(pattern) + "/threads.cti") << kProducer;
  setenv("GENICAM_GENTL64_PATH", pattern, 1);
  host.plugin = &tavro_host::LoadPlugin();
  std::thread(Watchdog).detach();
  std::atexit([] {
    std::fprintf(stderr, "tavro-fuzz-threads done: inputs %llu calls %llu callbacks %llu\n",
                 static_cast<unsigned long long>(inputs.load()),
                 static_cast<unsigned long long>(calls.load()),
                 static_cast<unsigned long long>(callbacks.load()));
    std::error_code ignored;
    std::filesystem::remove_all(std::getenv("GENICAM_GENTL64_PATH"), ignored);
  });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  tavro::fuzz::RunInput(data, size);
  return 0;
}
