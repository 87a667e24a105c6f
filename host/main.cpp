// tavro-host: the reference host. Loads libtavro.so from its own directory
// as any host does and drives it from the command line.
#include <cstdint>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <string>

#include "commands.h"

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

void PrintUsage() {
  std::cout << "usage: tavro-host [COMMAND] [OPTIONS]   (COMMAND --help for its options)\n\n";
  for (const Command& command : kCommands) {
    std::cout << "  " << command.name << std::string(10 - std::string(command.name).size(), ' ')
              << command.summary << "\n";
  }
  std::cout << "\nWithout GENICAM_GENTL64_PATH the bundled simulated cameras are used.\n";
}

}  // namespace

std::string OptionValue(const Arguments& arguments, size_t& index) {
  if (index + 1 >= arguments.size()) throw std::runtime_error(arguments[index] + " needs a value");
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
    throw std::runtime_error(option + ": not a number: \"" + text + "\"");
  }
  return static_cast<int32_t>(value);
}

}  // namespace tavro_host

int main(int argc, char** argv) {
  using namespace tavro_host;
  Arguments arguments(argv + 1, argv + argc);
  std::string name = "list";
  if (!arguments.empty() && arguments.front().rfind("--", 0) != 0) {
    name = arguments.front();
    arguments.erase(arguments.begin());
  } else if (!arguments.empty() && arguments.front() == "--help") {
    PrintUsage();
    return 0;
  }
  try {
    for (const Command& command : kCommands) {
      if (name == command.name) return command.run(arguments);
    }
    std::cerr << "tavro-host: unknown command " << name << "\n";
    PrintUsage();
    return 2;
  } catch (const std::exception& error) {
    std::cerr << "tavro-host: " << error.what() << "\n";
    return 1;
  }
}
