#include "producer/producer_search.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace oxelsim {

std::vector<std::string> SearchProducerFiles() {
  std::vector<std::string> paths;
  const char* variable = std::getenv("GENICAM_GENTL64_PATH");
  if (variable == nullptr) return paths;
  const std::string list = variable;
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    const std::string directory = list.substr(start, end - start);
    start = end + 1;
    if (directory.empty()) continue;
    std::error_code error;
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error)) {
      if (entry.path().extension() == ".cti" && entry.is_regular_file(error)) {
        found.push_back(entry.path().string());
      }
    }
    std::sort(found.begin(), found.end());
    for (const std::string& path : found) {
      if (std::find(paths.begin(), paths.end(), path) == paths.end()) paths.push_back(path);
    }
  }
  return paths;
}

}  // namespace oxelsim
