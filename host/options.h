// One option parser for every tavro-host command: each command lists its
// options once (names, whether a value follows, what to do with it), and
// the options several commands share are made here.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "commands.h"

namespace tavro_host {

struct Option {
  std::vector<std::string> names;  // "-o", or "--colour" and "--color"
  bool takesValue = false;
  // Called with the name used and its value ("" for a flag); throws
  // UsageError for a value it cannot take.
  std::function<void(const std::string& name, const std::string& value)> take;
};

// Parses `arguments` of `command` against `options`, in order. An unknown
// option, or one without its value, is a UsageError ("grab: unknown option
// -x"). Answers false when --help was among them (the rest still parsed).
bool ParseOptions(const std::string& command, const Arguments& arguments,
                  const std::vector<Option>& options);

// The options several commands share.
Option SelectOption(std::string& selection);  // --select TEXT
Option CameraOption(int& camera);             // --camera N
Option OutputOption(std::string& path);       // -o PATH
Option ColourOption(bool& colour);            // --colour, --color
Option IntegerOption(const char* name, int32_t& value);
Option FlagOption(const char* name, bool& flag);

}  // namespace tavro_host
