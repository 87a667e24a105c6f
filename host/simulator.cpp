#include "simulator.h"

#include <dlfcn.h>

#include <cstdlib>
#include <stdexcept>

#include "oxel_sim.h"
#include "plugin.h"

namespace tavro_host {
namespace {

// Null when the camera library the plug-in loads has no such function.
void* Control(const char* name) {
  static void* const library = dlopen(CameraLibraryPath().c_str(), RTLD_NOW | RTLD_LOCAL);
  return library != nullptr ? dlsym(library, name) : nullptr;
}

}  // namespace

std::string CameraLibraryPath() {
  const char* chosen = std::getenv("TAVRO_OXEL_LIBRARY");
  if (chosen != nullptr && *chosen != '\0') return chosen;
  return PluginDirectory() + "liboxel.so.1";
}

std::string CameraLibraryDescription() {
  if (Control("OxelSim_ResetAll") != nullptr) return "simulated cameras";
  // The library over Aravis has Aravis loaded by now.
  if (void* aravis = dlopen("libaravis-0.8.so.0", RTLD_NOW | RTLD_NOLOAD)) {
    using Version = unsigned (*)();
    auto major = reinterpret_cast<Version>(dlsym(aravis, "arv_get_major_version"));
    auto minor = reinterpret_cast<Version>(dlsym(aravis, "arv_get_minor_version"));
    auto micro = reinterpret_cast<Version>(dlsym(aravis, "arv_get_micro_version"));
    std::string text = "Aravis";
    if (major != nullptr && minor != nullptr && micro != nullptr) {
      text += " " + std::to_string(major()) + "." + std::to_string(minor()) + "." +
              std::to_string(micro());
    }
    dlclose(aravis);
    return text;
  }
  return "camera library";
}

std::string CameraSource(const std::string& producers) {
  const std::string library = CameraLibraryDescription();
  if (library == "simulated cameras") return "producers: " + producers;
  return "camera library: " + library + ", " + CameraLibraryPath();
}

std::string BundledCameraId(const std::string& key) {
  if (key == "OX-U3-23C-Left") return "OX23C-21A0417";
  if (key == "OX-U3-13M") return "OX13M-21B0112";
  return "";
}

void PulseLine0(const std::string& deviceId) {
  using Pulse = OXEL_RETURN_CODE (*)(const char*);
  auto pulse = reinterpret_cast<Pulse>(Control("OxelSim_PulseLine0"));
  if (pulse == nullptr) throw std::runtime_error("the camera library has no simulated line 0");
  if (pulse(deviceId.c_str()) != 0) {
    throw std::runtime_error("cannot pulse line 0 of simulated camera " + deviceId);
  }
}

bool HasFrameCounter() {
  return Control("OxelSim_GetLastFrameId") != nullptr;
}

namespace {

std::optional<uint64_t> ReadCounter(const char* control, const std::string& deviceId) {
  using Read = OXEL_RETURN_CODE (*)(const char*, uint64_t*);
  auto read = reinterpret_cast<Read>(Control(control));
  uint64_t value = 0;
  if (read == nullptr || deviceId.empty() || read(deviceId.c_str(), &value) != 0) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

std::optional<uint64_t> LastFrameId(const std::string& deviceId) {
  return ReadCounter("OxelSim_GetLastFrameId", deviceId);
}

std::optional<uint64_t> IncompleteFrameCount(const std::string& deviceId) {
  return ReadCounter("OxelSim_GetIncompleteFrameCount", deviceId);
}

}  // namespace tavro_host
