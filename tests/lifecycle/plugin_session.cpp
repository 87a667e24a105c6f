#include "plugin_session.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace tavro::testing {
namespace {

using ::testing::internal::CaptureStderr;
using ::testing::internal::CaptureStdout;
using ::testing::internal::GetCapturedStderr;
using ::testing::internal::GetCapturedStdout;

template <typename Function>
Function Resolve(void* handle, const char* name) {
  return reinterpret_cast<Function>(dlsym(handle, name));
}

template <typename Call>
int Captured(Output* output, Call call) {
  CaptureStdout();
  CaptureStderr();
  const int result = call();
  Output captured{GetCapturedStdout(), GetCapturedStderr()};
  if (output != nullptr) *output = std::move(captured);
  return result;
}

}  // namespace

const Plugin& LoadedPlugin() {
  static const Plugin plugin = [] {
    Plugin loaded;
    void* handle = dlopen(TAVRO_BIN_DIR "/libtavro.so", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return loaded;
    loaded.setup = Resolve<PFN_kxTavroSetup>(handle, "kxTavroSetup");
    loaded.tearDown = Resolve<PFN_kxTavroTearDown>(handle, "kxTavroTearDown");
    loaded.attach = Resolve<PFN_kxAttachTavroCamera>(handle, "_kxAttachTavroCamera");
    loaded.detach = Resolve<PFN_kxDetachTavroCamera>(handle, "_kxDetachTavroCamera");
    return loaded;
  }();
  return plugin;
}

void PluginSession::SetUp() {
  ASSERT_NE(plugin.setup, nullptr) << dlerror();
  ASSERT_NE(plugin.tearDown, nullptr);
  const char* path = std::getenv("GENICAM_GENTL64_PATH");
  hadPath_ = path != nullptr;
  if (hadPath_) savedPath_ = path;
}

void PluginSession::TearDown() {
  if (setUp_) TearDownSystem();
  if (hadPath_) {
    setenv("GENICAM_GENTL64_PATH", savedPath_.c_str(), 1);
  } else {
    unsetenv("GENICAM_GENTL64_PATH");
  }
  if (!directory_.empty()) std::filesystem::remove_all(directory_);
}

int PluginSession::Setup(const char* selection, Output* output) {
  const int result =
      Captured(output, [&] { return plugin.setup(0, selection, &widest, &highest, system.get()); });
  // The library is started even when no camera was found.
  setUp_ = true;
  return result;
}

int PluginSession::TearDownSystem(Output* output) {
  setUp_ = false;
  return Captured(output, [&] { return plugin.tearDown(system.get()); });
}

void PluginSession::UseProducers(const std::vector<std::string>& files) {
  if (directory_.empty()) {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavro-lifecycle-XXXXXX");
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
  }
  for (size_t k = 0; k < files.size(); ++k) {
    std::ofstream(directory_ + "/p" + std::to_string(k) + ".cti") << files[k];
  }
  setenv("GENICAM_GENTL64_PATH", directory_.c_str(), 1);
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
