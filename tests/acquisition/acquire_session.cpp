#include "acquire_session.h"

#include <dlfcn.h>

#include "oxel_sim.h"

namespace tavro::acquisition_test {
namespace {

struct Plugin {
  PFN_kxTavroSetup setup = nullptr;
  PFN_kxTavroAcquire acquire = nullptr;
  PFN_kxTavroWaitAcquire wait = nullptr;
  PFN_kxTavroAcquireStatus status = nullptr;
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
    loaded.wait = Resolve<PFN_kxTavroWaitAcquire>(handle, "kxTavroWaitAcquire");
    loaded.status = Resolve<PFN_kxTavroAcquireStatus>(handle, "kxTavroAcquireStatus");
    loaded.tearDown = Resolve<PFN_kxTavroTearDown>(handle, "kxTavroTearDown");
    return loaded;
  }();
  return plugin;
}

int32_t RecordFinished(CamImage* image, uint32_t userValue) {
  AcquireSession::finished.push_back({image, userValue});
  return 0;
}

}  // namespace

std::vector<Finished> AcquireSession::finished;

HostPlane::HostPlane(int32_t width, int32_t height, int32_t pitch, int32_t firstRow)
    : memory(static_cast<size_t>(pitch > 0 ? pitch : 0) * (firstRow + height), kFill) {
  info.pBits = memory.data();
  info.iWidth = width;
  info.iHeight = height;
  info.iPitch = pitch;
  info.iFirstRow = firstRow;
}

HostImage::HostImage(int16_t cameraId, int32_t width, int32_t height, bool colourPlanes) {
  // A few spare bytes per row and rows above the image, as host planes have.
  const int32_t pitch = width + 5;
  grey = std::make_unique<HostPlane>(width, height, pitch, 2);
  image.lMagic = TAVRO_IMAGE_MAGIC;
  image.ptCamera = &info;
  image.ptPlane = &grey->info;
  info.iCamId = cameraId;
  info.yColourPlanes = colourPlanes ? 1 : 0;
  if (!colourPlanes) return;
  red = std::make_unique<HostPlane>(width, height, pitch, 2);
  green = std::make_unique<HostPlane>(width, height, pitch, 2);
  blue = std::make_unique<HostPlane>(width, height, pitch, 2);
  redImage.ptPlane = &red->info;
  greenImage.ptPlane = &green->info;
  blueImage.ptPlane = &blue->info;
  image.ptRed = &redImage;
  image.ptGreen = &greenImage;
  image.ptBlue = &blueImage;
}

void HostImage::SetAoi(int32_t left, int32_t top, int32_t right, int32_t bottom) {
  image.yAoi = 1;
  image.iAoiLeft = left;
  image.iAoiTop = top;
  image.iAoiRight = right;
  image.iAoiBottom = bottom;
}

void AcquireSession::SetUp() {
  ASSERT_NE(LoadedPlugin().setup, nullptr) << dlerror();
  ASSERT_EQ(OxelSim_ResetAll(), 0);
  finished.clear();
}

void AcquireSession::TearDown() {
  if (system_) {
    StdoutOf([&] { LoadedPlugin().tearDown(system_.get()); });
    system_.reset();
  }
}

void AcquireSession::SetupOn(const SimCamera& camera) {
  TearDown();  // a test may set up more than once
  camera_ = &camera;
  system_ = std::make_unique<SystemRecord>();
  system_->pfnAcqFinished = RecordFinished;
  int widest = 0, highest = 0;
  int32_t result = -1;
  StdoutOf([&] { result = LoadedPlugin().setup(0, camera.key, &widest, &highest, system_.get()); });
  ASSERT_EQ(result, 0);
  ASSERT_EQ(system_->iNumCams, 1);
  ASSERT_STREQ(system_->tCam[0].szCamKey, camera.key);
}

int32_t AcquireSession::Acquire(HostImage& image, uint32_t wait, uint32_t userValue) {
  return LoadedPlugin().acquire(&image.image, wait, userValue, &status, system_.get());
}

int32_t AcquireSession::Wait(HostImage& image) {
  return LoadedPlugin().wait(&image.image, 0, 0, &status, system_.get());
}

int64_t AcquireSession::Status(HostImage& image) {
  uint32_t value = 0;
  if (LoadedPlugin().status(&image.image, &value, &status, system_.get()) != 0) return -1;
  return value;
}

uint64_t AcquireSession::LastFrameId() const {
  uint64_t id = 0;
  EXPECT_EQ(OxelSim_GetLastFrameId(camera_->id, &id), 0);
  return id;
}

uint64_t AcquireSession::WriteCount(const char* feature) const {
  uint64_t count = 0;
  EXPECT_EQ(OxelSim_GetFeatureWriteCount(camera_->id, feature, &count), 0) << feature;
  return count;
}

}  // namespace tavro::acquisition_test
