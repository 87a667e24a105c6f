#include "options.h"

#include <algorithm>

namespace tavro_host {

bool ParseOptions(const std::string& command, const Arguments& arguments,
                  const std::vector<Option>& options) {
  bool help = false;
  for (size_t k = 0; k < arguments.size(); ++k) {
    const std::string& name = arguments[k];
    if (name == "--help") {
      help = true;
      continue;
    }
    const auto known = std::find_if(options.begin(), options.end(), [&](const Option& option) {
      return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
    });
    if (known == options.end()) throw UsageError(command + ": unknown option " + name);
    known->take(name, known->takesValue ? OptionValue(arguments, k) : std::string());
  }
  return !help;
}

Option SelectOption(std::string& selection) {
  return {{"--select"}, true, [&](const std::string&, const std::string& v) { selection = v; }};
}

Option CameraOption(int& camera) {
  return IntegerOption("--camera", camera);
}

Option OutputOption(std::string& path) {
  return {{"-o"}, true, [&](const std::string&, const std::string& v) { path = v; }};
}

Option ColourOption(bool& colour) {
  return {{"--colour", "--color"}, false, [&](const std::string&, const std::string&) {
            colour = true;
          }};
}

Option IntegerOption(const char* name, int32_t& value) {
  return {{name}, true, [&](const std::string& used, const std::string& v) {
            value = IntegerValue(v, used);
          }};
}

Option FlagOption(const char* name, bool& flag) {
  return {{name}, false, [&](const std::string&, const std::string&) { flag = true; }};
}

}  // namespace tavro_host
