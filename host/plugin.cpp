#include "plugin.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace tavro_host {
namespace {

template <typename Function>
Function Resolve(void* handle, const char* name) {
  void* symbol = dlsym(handle, name);
  if (symbol == nullptr) {
    throw std::runtime_error(std::string("libtavro.so has no entry point ") + name);
  }
  return reinterpret_cast<Function>(symbol);
}

Plugin Load() {
  const std::string path = ExecutableDirectory() + "libtavro.so";
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error("Cannot load " + path + ": " + dlerror());
  Plugin plugin;
  plugin.setup = Resolve<PFN_kxTavroSetup>(handle, "kxTavroSetup");
  plugin.acquire = Resolve<PFN_kxTavroAcquire>(handle, "kxTavroAcquire");
  plugin.liveAcquire = Resolve<PFN_kxTavroLiveAcquire>(handle, "kxTavroLiveAcquire");
  plugin.waitAcquire = Resolve<PFN_kxTavroWaitAcquire>(handle, "kxTavroWaitAcquire");
  plugin.acquireStatus = Resolve<PFN_kxTavroAcquireStatus>(handle, "kxTavroAcquireStatus");
  plugin.order = Resolve<PFN_kxTavroOrder>(handle, "_kxTavroOrder");
  plugin.attach = Resolve<PFN_kxAttachTavroCamera>(handle, "_kxAttachTavroCamera");
  plugin.detach = Resolve<PFN_kxDetachTavroCamera>(handle, "_kxDetachTavroCamera");
  plugin.tearDown = Resolve<PFN_kxTavroTearDown>(handle, "kxTavroTearDown");
  return plugin;
}

}  // namespace

std::string ExecutableDirectory() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return "./";
  return self.parent_path().string() + "/";
}

const Plugin& LoadPlugin() {
  static const Plugin plugin = Load();
  return plugin;
}

std::string EnsureProducerPath() {
  if (const char* path = std::getenv("GENICAM_GENTL64_PATH")) return path;
  const std::string beside = ExecutableDirectory() + "producers";
  std::error_code error;
  const std::string path =
      std::filesystem::is_directory(beside, error) ? beside : std::string(TAVRO_BUNDLED_PRODUCERS);
  setenv("GENICAM_GENTL64_PATH", path.c_str(), 1);
  return path;
}

}  // namespace tavro_host
