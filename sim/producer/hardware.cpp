#include "producer/hardware.h"

#include <climits>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "core/api.h"
#include "producer/producer_search.h"

namespace oxelsim {

namespace {

std::string CanonicalPath(const std::string& path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) != nullptr ? std::string(resolved) : path;
}

std::string ReadIfPossible(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  if (file) text << file.rdbuf();
  return text.str();
}

}  // namespace

std::shared_ptr<LoadedFile> Hardware::Load(const std::string& path) {
  const std::string key = CanonicalPath(path);
  const std::string text = ReadIfPossible(key);
  {
    std::lock_guard lock(mutex_);
    auto found = files_.find(key);
    if (found != files_.end() && found->second->text == text) return found->second;
  }
  auto file = std::make_shared<LoadedFile>();
  file->description = LoadProducerFile(path);
  file->text = text;
  for (const InterfaceDescription& interface : file->description.interfaces) {
    std::vector<std::shared_ptr<SimCamera>> cameras;
    for (const CameraDescription& camera : interface.cameras) {
      cameras.push_back(std::make_shared<SimCamera>(camera));
    }
    file->cameras.push_back(std::move(cameras));
  }
  std::lock_guard lock(mutex_);
  files_[key] = file;
  return file;
}

std::vector<std::shared_ptr<SimCamera>> Hardware::FindLoaded(const std::string& deviceId) {
  std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<SimCamera>> found;
  for (const auto& [path, file] : files_) {
    for (const auto& cameras : file->cameras) {
      for (const auto& camera : cameras) {
        if (camera->Id() == deviceId) found.push_back(camera);
      }
    }
  }
  return found;
}

std::vector<std::shared_ptr<SimCamera>> Hardware::Cameras(const std::string& deviceId) {
  std::vector<std::shared_ptr<SimCamera>> found = FindLoaded(deviceId);
  if (!found.empty()) return found;
  for (const std::string& path : SearchProducerFiles()) {
    try {
      Load(path);
    } catch (const ApiError&) {
      // A file that does not load has no cameras to act on; opening it reports why.
    }
  }
  found = FindLoaded(deviceId);
  if (found.empty()) {
    Fail(OXEL_RETURN_CODE_NOT_FOUND,
         std::string(CurrentFunction()) + ": no simulated camera with ID '" + deviceId +
             "' in the loaded producer files or in GENICAM_GENTL64_PATH");
  }
  return found;
}

void Hardware::ResetAll() {
  std::vector<std::shared_ptr<SimCamera>> all;
  {
    std::lock_guard lock(mutex_);
    for (const auto& [path, file] : files_) {
      for (const auto& cameras : file->cameras)
        all.insert(all.end(), cameras.begin(), cameras.end());
    }
  }
  for (const auto& camera : all) camera->ResetToFile();
}

std::vector<std::shared_ptr<LoadedFile>> Hardware::Forget() {
  std::lock_guard lock(mutex_);
  std::vector<std::shared_ptr<LoadedFile>> forgotten;
  for (auto& [path, file] : files_) forgotten.push_back(std::move(file));
  files_.clear();
  return forgotten;
}

}  // namespace oxelsim
