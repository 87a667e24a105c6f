#include "simulator.h"

#include <dlfcn.h>

#include <stdexcept>

#include "oxel_sim.h"
#include "plugin.h"

namespace tavro_host {
namespace {

// Null when the camera library the plug-in loads (beside it) has no such
// function.
void* Control(const char* name) {
  static void* const library =
      dlopen((PluginDirectory() + "liboxel.so.1").c_str(), RTLD_NOW | RTLD_LOCAL);
  return library != nullptr ? dlsym(library, name) : nullptr;
}

}  // namespace

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
