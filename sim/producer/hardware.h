// The simulated hardware: the cameras of every producer file loaded in this
// process. A file is loaded when a producer library is opened from it, or when
// a control function names a camera of a file on GENICAM_GENTL64_PATH that is
// not loaded yet, so tests can act on a camera before the library starts.
// Loading the same path again reuses its cameras unless the file changed.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "camera/sim_camera.h"
#include "producer/producer_file.h"

namespace oxelsim {

struct LoadedFile {
  std::string text;
  SystemDescription description;
  // cameras[i][c] is description.interfaces[i].cameras[c].
  std::vector<std::vector<std::shared_ptr<SimCamera>>> cameras;
};

class Hardware {
 public:
  // Fails with CTI_LOADING_ERROR.
  std::shared_ptr<LoadedFile> Load(const std::string& path);
  // Every camera with that ID; fails with NOT_FOUND when there is none.
  std::vector<std::shared_ptr<SimCamera>> Cameras(const std::string& deviceId);
  void ResetAll();
  void Clear();

 private:
  std::vector<std::shared_ptr<SimCamera>> FindLoaded(const std::string& deviceId);

  std::mutex mutex_;
  std::unordered_map<std::string, std::shared_ptr<LoadedFile>> files_;
};

}  // namespace oxelsim
