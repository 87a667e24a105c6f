// tavro-host run as a child process, for tests that use it as a user does.
#pragma once

#include <cstdint>
#include <string>

namespace tavro_test {

struct HostRun {
  int exitCode = -1;
  std::string output;  // standard output, and standard error unless `errors` has it
  std::string errors;  // standard error, from RunHostSeparately only
};

// Runs `environment tavro-host arguments` through the shell.
HostRun RunHost(const std::string& environment, const std::string& arguments);

// The same with standard output and standard error kept apart.
HostRun RunHostSeparately(const std::string& environment, const std::string& arguments);

// The environment in which the host uses the cameras bundled with it.
inline const std::string kBundled = "env -u GENICAM_GENTL64_PATH";

struct PngHeader {
  bool valid = false;  // the PNG signature followed by an IHDR chunk
  uint32_t width = 0;
  uint32_t height = 0;
  int colourType = -1;  // 0 grey, 2 RGB
};

// The header of the PNG file at `path`; not valid when it is missing or not a PNG.
PngHeader ReadPngHeader(const std::string& path);

// A file name in the test's temporary directory, removed first.
std::string TemporaryPng(const std::string& name);

}  // namespace tavro_test
