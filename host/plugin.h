// libtavro.so as a host meets it: loaded with dlopen from the directory of
// this executable, its nine entry points resolved by name.
#pragma once

#include <string>

#include "tavro/tavro_host.h"

namespace tavro_host {

struct Plugin {
  PFN_kxTavroSetup setup = nullptr;
  PFN_kxTavroAcquire acquire = nullptr;
  PFN_kxTavroLiveAcquire liveAcquire = nullptr;
  PFN_kxTavroWaitAcquire waitAcquire = nullptr;
  PFN_kxTavroAcquireStatus acquireStatus = nullptr;
  PFN_kxTavroOrder order = nullptr;
  PFN_kxAttachTavroCamera attach = nullptr;
  PFN_kxDetachTavroCamera detach = nullptr;
  PFN_kxTavroTearDown tearDown = nullptr;
};

// The directory holding the running executable, with a trailing '/'.
std::string ExecutableDirectory();

// Loads the plug-in once and keeps it for the process. Throws
// std::runtime_error naming the file or the missing entry point.
const Plugin& LoadPlugin();

// Points the camera library at the bundled simulated cameras when
// GENICAM_GENTL64_PATH is not set: producers/ beside the executable, else
// the source tree's. Returns the path in effect.
std::string EnsureProducerPath();

}  // namespace tavro_host
