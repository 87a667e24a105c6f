// The sub-commands of tavro-host. Each takes the arguments after its name
// and answers the process exit code.
#pragma once

#include <string>
#include <vector>

namespace tavro_host {

using Arguments = std::vector<std::string>;

// Sets up the cameras and describes each: key, formats, AOI limits, largest
// size and parameter table.
int RunList(const Arguments& arguments);

// Takes one image from one camera and writes it as a PNG.
int RunGrab(const Arguments& arguments);

// The value after option `name` at position `index` (which it advances);
// throws std::runtime_error when it is missing.
std::string OptionValue(const Arguments& arguments, size_t& index);

}  // namespace tavro_host
