#include "plugin.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <type_traits>

// Where an installation puts the plug-in and the producer files, relative to
// the executable's directory (the test programs use the build tree only).
#ifndef TAVRO_INSTALLED_PLUGIN_DIR
#define TAVRO_INSTALLED_PLUGIN_DIR "../lib/tavro"
#endif
#ifndef TAVRO_INSTALLED_PRODUCER_DIR
#define TAVRO_INSTALLED_PRODUCER_DIR "../share/tavro/producers"
#endif

namespace tavro_host {
namespace {

constexpr const char* kInstalledPluginDir = TAVRO_INSTALLED_PLUGIN_DIR;
constexpr const char* kInstalledProducerDir = TAVRO_INSTALLED_PRODUCER_DIR;

PluginOutput gOutput = PluginOutput::kShown;

// Points standard output and error elsewhere for the life of a plug-in call.
// The plug-in writes through both C stdio and iostreams; both are flushed at
// each switch so that no line lands on the wrong side.
class Redirection {
 public:
  Redirection() {
    if (gOutput == PluginOutput::kShown) return;
    Flush();
    savedOut_ = dup(STDOUT_FILENO);
    savedError_ = dup(STDERR_FILENO);
    if (gOutput == PluginOutput::kHidden) {
      const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
      dup2(null, STDOUT_FILENO);
      dup2(null, STDERR_FILENO);
      close(null);
    } else {
      dup2(STDERR_FILENO, STDOUT_FILENO);
    }
  }
  ~Redirection() {
    if (savedOut_ < 0) return;
    Flush();
    dup2(savedOut_, STDOUT_FILENO);
    dup2(savedError_, STDERR_FILENO);
    close(savedOut_);
    close(savedError_);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  static void Flush() {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    std::fflush(stderr);
  }
  int savedOut_ = -1;
  int savedError_ = -1;
};

// The entry points as the plug-in exports them; the Plugin handed out calls
// them through Redirected so that every call honours the output setting.
Plugin gExported;

template <auto Member, typename Function>
struct Redirected;
template <auto Member, typename Result, typename... Parameters>
struct Redirected<Member, Result (*)(Parameters...)> {
  static Result Call(Parameters... parameters) {
    const Redirection redirection;
    return (gExported.*Member)(parameters...);
  }
};

template <auto Member>
void Resolve(void* handle, const char* name, Plugin& plugin) {
  void* symbol = dlsym(handle, name);
  if (symbol == nullptr) {
    throw std::runtime_error(std::string("libtavro.so has no entry point ") + name);
  }
  using Function = std::remove_reference_t<decltype(plugin.*Member)>;
  gExported.*Member = reinterpret_cast<Function>(symbol);
  plugin.*Member = Redirected<Member, Function>::Call;
}

// The first of `candidates` (directories relative to this executable's, or
// absolute) that holds `name`; the first candidate when none does.
std::string FindBesideExecutable(std::initializer_list<const char*> candidates,
                                 const std::string& name) {
  const std::filesystem::path self = ExecutableDirectory();
  for (const char* candidate : candidates) {
    const std::filesystem::path directory = (self / candidate).lexically_normal();
    std::error_code error;
    if (std::filesystem::exists(directory / name, error)) return directory.string() + "/";
  }
  return (self / *candidates.begin()).lexically_normal().string() + "/";
}

Plugin Load() {
  const std::string path = PluginDirectory() + "libtavro.so";
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error("Cannot load " + path + ": " + dlerror());
  Plugin plugin;
  Resolve<&Plugin::setup>(handle, "kxTavroSetup", plugin);
  Resolve<&Plugin::acquire>(handle, "kxTavroAcquire", plugin);
  Resolve<&Plugin::liveAcquire>(handle, "kxTavroLiveAcquire", plugin);
  Resolve<&Plugin::waitAcquire>(handle, "kxTavroWaitAcquire", plugin);
  Resolve<&Plugin::acquireStatus>(handle, "kxTavroAcquireStatus", plugin);
  Resolve<&Plugin::order>(handle, "_kxTavroOrder", plugin);
  Resolve<&Plugin::attach>(handle, "_kxAttachTavroCamera", plugin);
  Resolve<&Plugin::detach>(handle, "_kxDetachTavroCamera", plugin);
  Resolve<&Plugin::tearDown>(handle, "kxTavroTearDown", plugin);
  return plugin;
}

}  // namespace

void SetPluginOutput(PluginOutput output, bool unlessHidden) {
  if (unlessHidden && gOutput == PluginOutput::kHidden) return;
  gOutput = output;
}

std::string ExecutableDirectory() {
  std::error_code error;
  const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return "./";
  return self.parent_path().string() + "/";
}

std::string PluginDirectory() {
  // Beside the executable in a build tree; in the library directory when installed.
  static const std::string directory =
      FindBesideExecutable({".", kInstalledPluginDir}, "libtavro.so");
  return directory;
}

const Plugin& LoadPlugin() {
  static const Plugin plugin = Load();
  return plugin;
}

std::string EnsureProducerPath() {
  if (const char* path = std::getenv("GENICAM_GENTL64_PATH")) return path;
  std::string path =
      FindBesideExecutable({"producers", kInstalledProducerDir, TAVRO_BUNDLED_PRODUCERS}, ".");
  path.pop_back();  // no trailing '/' in the search path shown to the user
  setenv("GENICAM_GENTL64_PATH", path.c_str(), 1);
  return path;
}

}  // namespace tavro_host
