#include "live/live_session.h"

#include <dlfcn.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "oxel_sim.h"

namespace tavro::live_test {
namespace {

struct Plugin {
  PFN_kxTavroSetup setup = nullptr;
  PFN_kxTavroAcquire acquire = nullptr;
  PFN_kxTavroLiveAcquire live = nullptr;
  PFN_kxTavroWaitAcquire wait = nullptr;
  PFN_kxDetachTavroCamera detach = nullptr;
  PFN_kxAttachTavroCamera attach = nullptr;
  PFN_kxTavroTearDown tearDown = nullptr;
};

template <typename Function>
Function Resolve(void* handle, const char* name) {
  return reinterpret_cast<Function>(dlsym(handle, name));
}

// Loaded once and kept, as a host keeps it.
const Plugin& LoadedPlugin() {
  static const Plugin plugin = [] {
    Plugin loaded;
    void* handle = dlopen(TAVRO_BIN_DIR "/libtavro.so", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return loaded;
    loaded.setup = Resolve<PFN_kxTavroSetup>(handle, "kxTavroSetup");
    loaded.acquire = Resolve<PFN_kxTavroAcquire>(handle, "kxTavroAcquire");
    loaded.live = Resolve<PFN_kxTavroLiveAcquire>(handle, "kxTavroLiveAcquire");
    loaded.wait = Resolve<PFN_kxTavroWaitAcquire>(handle, "kxTavroWaitAcquire");
    loaded.detach = Resolve<PFN_kxDetachTavroCamera>(handle, "_kxDetachTavroCamera");
    loaded.attach = Resolve<PFN_kxAttachTavroCamera>(handle, "_kxAttachTavroCamera");
    loaded.tearDown = Resolve<PFN_kxTavroTearDown>(handle, "kxTavroTearDown");
    return loaded;
  }();
  return plugin;
}

int32_t RecordFinished(CamImage* image, uint32_t userValue) {
  LiveSession::finished.push_back({image, userValue});
  return 0;
}

}  // namespace

std::vector<Finished> LiveSession::finished;

LiveImage::LiveImage(int16_t cameraId, int32_t width, int32_t height, bool colour)
    : HostImage(cameraId, width, height, colour) {
  // A stride wider than the image, so that a display row that runs over
  // shows up in the spare pixels; as tall as the planes' memory, since the
  // display starts at their first row.
  live.iStride = width + 3;
  livePixels.assign(static_cast<size_t>(live.iStride) * (grey->info.iFirstRow + height),
                    kDisplayFill);
  live.plPixels = livePixels.data();
  image.ptLiveBuffer = &live;
  display.qwLiveDisplayTag = kDisplayTag;
  view.ptDisplay = &display;
  view.yColourDisplay = colour ? 1 : 0;
  image.qwColourDisplay = colour ? 1 : 0;
  info.ptHostView = &view;
}

uint32_t LiveImage::NewFrameFlag() {
  return std::atomic_ref<uint32_t>(display.yNewLiveFrame).load(std::memory_order_acquire);
}

void LiveImage::ClearNewFrameFlag() {
  std::atomic_ref<uint32_t>(display.yNewLiveFrame).store(0, std::memory_order_relaxed);
}

bool LiveImage::WaitForNewFrame(std::chrono::seconds bound) {
  const auto deadline = std::chrono::steady_clock::now() + bound;
  while (NewFrameFlag() == 0) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

void LiveSession::SetUp() {
  ASSERT_NE(LoadedPlugin().live, nullptr) << dlerror();
  ASSERT_EQ(OxelSim_ResetAll(), 0);
  finished.clear();
}

void LiveSession::TearDown() {
  if (system_ && !tornDown_) {
    StdoutOf([&] { LoadedPlugin().tearDown(system_.get()); });
    system_.reset();
  }
}

std::vector<int16_t> LiveSession::SetupOn(std::initializer_list<SimCamera> cameras) {
  std::string selection;
  for (const SimCamera& camera : cameras) selection += std::string(camera.key) + " ";
  TearDown();  // a test may set up more than once
  tornDown_ = false;
  system_ = std::make_unique<SystemRecord>();
  system_->pfnAcqFinished = RecordFinished;
  int widest = 0, highest = 0;
  int32_t result = -1;
  StdoutOf([&] {
    result = LoadedPlugin().setup(0, selection.c_str(), &widest, &highest, system_.get());
  });
  EXPECT_EQ(result, 0);
  std::vector<int16_t> numbers;
  for (const SimCamera& camera : cameras) {
    for (int16_t n = 0; n < system_->iNumCams; ++n) {
      if (std::strcmp(system_->tCam[n].szCamKey, camera.key) == 0) numbers.push_back(n);
    }
  }
  EXPECT_EQ(numbers.size(), cameras.size()) << selection;
  numbers.resize(cameras.size(), 0);  // the failure above already counts
  return numbers;
}

int32_t LiveSession::Live(HostImage& image, uint32_t start, uint32_t userValue) {
  return LoadedPlugin().live(&image.image, start, userValue, &status, system_.get());
}

int32_t LiveSession::Acquire(HostImage& image, uint32_t wait, uint32_t userValue) {
  return LoadedPlugin().acquire(&image.image, wait, userValue, &status, system_.get());
}

int32_t LiveSession::Wait(HostImage& image) {
  return LoadedPlugin().wait(&image.image, 0, 0, &status, system_.get());
}

int32_t LiveSession::Detach(int32_t number) {
  int32_t result = -1;
  StdoutOf([&] { result = LoadedPlugin().detach(system_.get(), number); });
  return result;
}

int32_t LiveSession::Attach(int32_t number) {
  int32_t result = -1;
  StdoutOf([&] { result = LoadedPlugin().attach(system_.get(), number); });
  return result;
}

int32_t LiveSession::TearDownPlugin() {
  int32_t result = -1;
  StdoutOf([&] { result = LoadedPlugin().tearDown(system_.get()); });
  tornDown_ = true;
  return result;
}

uint64_t LastFrameId(const SimCamera& camera) {
  uint64_t id = 0;
  EXPECT_EQ(OxelSim_GetLastFrameId(camera.id, &id), 0) << camera.id;
  return id;
}

}  // namespace tavro::live_test
