#include "support/plugin_host.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "oxel_sim.h"

namespace tavro::testing {
namespace {

template <typename Call>
int Captured(Output* output, Call call) {
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  const int result = call();
  Output captured{::testing::internal::GetCapturedStdout(),
                  ::testing::internal::GetCapturedStderr()};
  if (output != nullptr) *output = std::move(captured);
  return result;
}

int32_t RecordFinished(CamImage* image, uint32_t userValue) {
  PluginHost::finished.push_back({image, userValue});
  return 0;
}

}  // namespace

std::vector<Finished> PluginHost::finished;

void PluginHost::SetUp() {
  ASSERT_EQ(OxelSim_ResetAll(), 0);
  finished.clear();
  const char* path = std::getenv("GENICAM_GENTL64_PATH");
  hadPath_ = path != nullptr;
  if (hadPath_) savedPath_ = path;
}

void PluginHost::TearDown() {
  if (setUp_) TearDownSystem();
  if (hadPath_) {
    setenv("GENICAM_GENTL64_PATH", savedPath_.c_str(), 1);
  } else {
    unsetenv("GENICAM_GENTL64_PATH");
  }
  if (!directory_.empty()) std::filesystem::remove_all(directory_);
}

int PluginHost::Setup(const char* selection, Output* output) {
  const int result =
      Captured(output, [&] { return plugin.setup(0, selection, &widest, &highest, system.get()); });
  // The library is started even when no camera was found.
  setUp_ = true;
  return result;
}

int PluginHost::TearDownSystem(Output* output) {
  setUp_ = false;
  return Captured(output, [&] { return plugin.tearDown(system.get()); });
}

int PluginHost::SetupFresh(const char* selection) {
  if (setUp_) TearDownSystem();  // a test may set up more than once
  system = std::make_unique<SystemRecord>();
  system->pfnAcqFinished = RecordFinished;
  return Setup(selection);
}

std::vector<int16_t> PluginHost::SetupOn(std::initializer_list<SimCamera> cameras) {
  std::string selection;
  for (const SimCamera& camera : cameras) selection += std::string(camera.key) + " ";
  EXPECT_EQ(SetupFresh(selection.c_str()), 0);
  EXPECT_EQ(system->iNumCams, static_cast<int>(cameras.size())) << selection;
  std::vector<int16_t> numbers;
  for (const SimCamera& camera : cameras) {
    for (int16_t n = 0; n < system->iNumCams; ++n) {
      if (std::strcmp(system->tCam[n].szCamKey, camera.key) == 0) numbers.push_back(n);
    }
  }
  EXPECT_EQ(numbers.size(), cameras.size()) << selection;
  numbers.resize(cameras.size(), 0);  // the failure above already counts
  return numbers;
}

int32_t PluginHost::Acquire(HostImage& image, uint32_t wait, uint32_t userValue) {
  return plugin.acquire(&image.image, wait, userValue, &status, system.get());
}

int32_t PluginHost::Live(HostImage& image, uint32_t start, uint32_t userValue) {
  return plugin.liveAcquire(&image.image, start, userValue, &status, system.get());
}

int32_t PluginHost::Wait(HostImage& image) {
  return plugin.waitAcquire(&image.image, 0, 0, &status, system.get());
}

int64_t PluginHost::Status(HostImage& image) {
  uint32_t value = 0;
  if (plugin.acquireStatus(&image.image, &value, &status, system.get()) != 0) return -1;
  return value;
}

int32_t PluginHost::Detach(int32_t number) {
  return Captured(nullptr, [&] { return plugin.detach(system.get(), number); });
}

int32_t PluginHost::Attach(int32_t number) {
  return Captured(nullptr, [&] { return plugin.attach(system.get(), number); });
}

void PluginHost::UseProducers(const std::vector<std::string>& files) {
  if (directory_.empty()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavro-producers-XXXXXX");
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
  }
  for (size_t k = 0; k < files.size(); ++k) {
    std::ofstream(directory_ + "/p" + std::to_string(k) + ".cti") << files[k];
  }
  setenv("GENICAM_GENTL64_PATH", directory_.c_str(), 1);
}

void PluginHost::UseInstantCameras() {
  setenv("GENICAM_GENTL64_PATH", TAVRO_INSTANT_PRODUCERS, 1);
}

uint64_t LastFrameId(const SimCamera& camera) {
  uint64_t id = 0;
  EXPECT_EQ(OxelSim_GetLastFrameId(camera.id, &id), 0) << camera.id;
  return id;
}

uint64_t WriteCount(const SimCamera& camera, const char* feature) {
  uint64_t count = 0;
  EXPECT_EQ(OxelSim_GetFeatureWriteCount(camera.id, feature, &count), 0) << feature;
  return count;
}

std::string ProducerFile(const std::vector<std::string>& cameras) {
  std::string list;
  for (const auto& camera : cameras) list += (list.empty() ? "" : ",") + camera;
  return R"({"system": {"id": "LifecycleSystem", "interfaces": [{"id": "Bus", "cameras": [)" +
         list + "]}]}}";
}

std::string SmallCamera(const std::string& id, const std::string& model, const std::string& extra) {
  return R"({"id": ")" + id + R"(", "model": ")" + model +
         R"(", "sensor": {"width": 32, "height": 16})" + (extra.empty() ? "" : ", " + extra) + "}";
}

}  // namespace tavro::testing
