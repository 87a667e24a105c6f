// tavro-host: the reference host. Loads libtavro.so from its own directory
// as any host does and drives it from the command line.
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <ostream>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "plugin.h"

namespace tavro_host {
namespace {

struct Command {
  const char* name;
  const char* summary;
  int (*run)(const Arguments& arguments);
};

// One line per sub-command.
const Command kCommands[] = {
    {"list", "describe every camera setup finds (the default)", RunList},
    {"grab", "take one image into a PNG file", RunGrab},
    {"live", "run live acquisition and save the live display as a PNG", RunLive},
    {"cycle", "detach, grab, attach and grab again, showing each step", RunCycle},
    {"order", "reorder the host camera ids", RunOrder},
};

void PrintUsage(std::ostream& out) {
  out << "usage: tavro-host [--quiet] [--camera-library PATH] [COMMAND] [OPTIONS]\n"
         "       (COMMAND --help for its options)\n\n";
  for (const Command& command : kCommands) {
    out << "  " << command.name << std::string(10 - std::string(command.name).size(), ' ')
        << command.summary << "\n";
  }
  out << "\n  -q, --quiet  hide the plug-in's own messages; results and errors still show\n"
         "  --camera-library PATH\n"
         "               the Oxel camera library the plug-in loads (sets TAVRO_OXEL_LIBRARY):\n"
         "               lib/tavro/aravis/liboxel.so.1 for real cameras through Aravis\n"
         "\nResults go to standard output, errors to standard error. Exit codes:\n"
         "  0  done\n"
         "  1  failed: no camera, the plug-in or an acquisition failed, a file not written\n"
         "  2  wrong command line: unknown command or option, missing or malformed value\n"
         "\nWithout GENICAM_GENTL64_PATH the bundled simulated cameras are used; with\n"
         "TAVRO_OXEL_LIBRARY (or --camera-library) the cameras of that library.\n";
}

// Takes the options every command accepts, wherever they stand.
void TakeGlobalOptions(Arguments& arguments) {
  for (auto k = arguments.begin(); k != arguments.end();) {
    if (*k == "--quiet" || *k == "-q") {
      SetPluginOutput(PluginOutput::kHidden);
      k = arguments.erase(k);
    } else if (*k == "--camera-library") {
      if (std::next(k) == arguments.end()) throw UsageError("--camera-library needs a value");
      std::error_code error;
      const std::string path = std::filesystem::absolute(*std::next(k), error).string();
      if (error || !std::filesystem::is_regular_file(path)) {
        throw UsageError("--camera-library: no such file: \"" + *std::next(k) + "\"");
      }
      // Read by the plug-in when it binds its camera library.
      setenv("TAVRO_OXEL_LIBRARY", path.c_str(), 1);
      k = arguments.erase(k, std::next(k, 2));
    } else {
      ++k;
    }
  }
}

}  // namespace

std::string OptionValue(const Arguments& arguments, size_t& index) {
  if (index + 1 >= arguments.size()) throw UsageError(arguments[index] + " needs a value");
  return arguments[++index];
}

int32_t IntegerValue(const std::string& text, const std::string& option) {
  size_t used = 0;
  long value = 0;
  try {
    value = std::stol(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (text.empty() || used != text.size() || value < INT32_MIN || value > INT32_MAX) {
    throw UsageError(option + ": not a number: \"" + text + "\"");
  }
  return static_cast<int32_t>(value);
}

}  // namespace tavro_host

int main(int argc, char** argv) {
  using namespace tavro_host;
  Arguments arguments(argv + 1, argv + argc);
  try {
    TakeGlobalOptions(arguments);
  } catch (const UsageError& error) {
    std::cerr << "tavro-host: " << error.what() << "\n";
    return kExitUsage;
  }
  std::string name = "list";
  if (!arguments.empty() && arguments.front().rfind("-", 0) != 0) {
    name = arguments.front();
    arguments.erase(arguments.begin());
  } else if (!arguments.empty() && (arguments.front() == "--help" || arguments.front() == "-h")) {
    PrintUsage(std::cout);
    return kExitDone;
  }
  try {
    for (const Command& command : kCommands) {
      if (name == command.name) return command.run(arguments);
    }
    std::cerr << "tavro-host: unknown command " << name << "\n";
    PrintUsage(std::cerr);
    return kExitUsage;
  } catch (const UsageError& error) {
    std::cerr << "tavro-host: " << error.what() << "\n";
    return kExitUsage;
  } catch (const std::exception& error) {
    std::cerr << "tavro-host: " << error.what() << "\n";
    return kExitFailed;
  }
}
