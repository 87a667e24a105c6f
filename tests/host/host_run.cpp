#include "host_run.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tavro_test {

namespace {

HostRun Run(const std::string& environment, const std::string& arguments,
            const std::string& errorRedirection) {
  const std::string command =
      environment + " " TAVRO_BIN_DIR "/tavro-host " + arguments + " " + errorRedirection;
  HostRun run;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  char buffer[4096];
  size_t count = 0;
  while ((count = fread(buffer, 1, sizeof buffer, pipe)) > 0) run.output.append(buffer, count);
  const int status = pclose(pipe);
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

uint32_t BigEndian(const unsigned char* bytes) {
  return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
         static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

}  // namespace

HostRun RunHost(const std::string& environment, const std::string& arguments) {
  return Run(environment, arguments, "2>&1");
}

HostRun RunHostSeparately(const std::string& environment, const std::string& arguments) {
  const std::filesystem::path errorFile =
      std::filesystem::temp_directory_path() /
      ("tavro-host-test-" + std::to_string(getpid()) + "-stderr.txt");
  HostRun run = Run(environment, arguments, "2>" + errorFile.string());
  std::ifstream errors(errorFile);
  run.errors.assign(std::istreambuf_iterator<char>(errors), std::istreambuf_iterator<char>());
  std::filesystem::remove(errorFile);
  return run;
}

PngHeader ReadPngHeader(const std::string& path) {
  // Signature (8), IHDR length (4) and type (4), width, height, bit depth, colour type.
  std::array<unsigned char, 26> bytes{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), bytes.size())) return {};
  constexpr unsigned char kSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  if (!std::equal(std::begin(kSignature), std::end(kSignature), bytes.begin())) return {};
  if (std::string(bytes.begin() + 12, bytes.begin() + 16) != "IHDR") return {};
  return {true, BigEndian(&bytes[16]), BigEndian(&bytes[20]), bytes[25]};
}

std::string TemporaryPng(const std::string& name) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                     ("tavro-host-test-" + std::to_string(getpid()) + "-" + name);
  std::filesystem::remove(path);
  return path.string();
}

}  // namespace tavro_test
