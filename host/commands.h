// The sub-commands of tavro-host. Each takes the arguments after its name
// and answers the process exit code.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavro_host {

using Arguments = std::vector<std::string>;

// Exit codes of every command.
enum ExitCode : int {
  kExitDone = 0,
  kExitFailed = 1,  // the cameras, the plug-in or the output file failed
  kExitUsage = 2,   // the command line is wrong; nothing was tried
};

// A wrong command line: an unknown option, a missing or malformed value.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Sets up the cameras and describes each: key, formats, AOI limits, largest
// size and parameter table.
int RunList(const Arguments& arguments);

// Takes one image from one camera and writes it as a PNG.
int RunGrab(const Arguments& arguments);

// Runs live acquisition for a number of frames or seconds and saves the
// live display as a PNG.
int RunLive(const Arguments& arguments);

// Detaches a camera, grabs, detaches it again, attaches it and grabs, showing the slot
// flags and the plug-in's messages at each step.
int RunCycle(const Arguments& arguments);

// Reorders the host camera ids and shows the map before and after.
int RunOrder(const Arguments& arguments);

// The value after option `name` at position `index` (which it advances);
// throws UsageError when it is missing.
std::string OptionValue(const Arguments& arguments, size_t& index);

// `text` as a 32-bit integer; throws UsageError naming `option`.
int32_t IntegerValue(const std::string& text, const std::string& option);

}  // namespace tavro_host
