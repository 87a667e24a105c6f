// libtavro.so as a host meets it: loaded with dlopen from the directory of
// this executable (or of its installation), its nine entry points resolved by name.
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

// Where the plug-in's own messages go while a plug-in call runs. The host's
// messages are not affected.
enum class PluginOutput {
  kShown,            // as the plug-in writes them
  kOnStandardError,  // standard output moved to standard error: keeps it for data
  kHidden,           // both discarded (--quiet)
};
// Takes effect for the calls that follow. With `unlessHidden`, a hidden
// output stays hidden.
void SetPluginOutput(PluginOutput output, bool unlessHidden = false);

// The directory holding the running executable, with a trailing '/'.
std::string ExecutableDirectory();

// The directory libtavro.so is loaded from, with a trailing '/': the
// executable's own (a build tree) or the installation's library directory.
std::string PluginDirectory();

// Loads the plug-in once and keeps it for the process. Throws
// std::runtime_error naming the file or the missing entry point.
const Plugin& LoadPlugin();

// Points the camera library at the bundled simulated cameras when
// GENICAM_GENTL64_PATH is not set: producers/ beside the executable, else
// the installation's share/tavro/producers, else the source tree's. Returns the path in effect.
std::string EnsureProducerPath();

}  // namespace tavro_host
