// The simulated hardware: the cameras of the producer files loaded since the
// library was last closed by its last user. A file is loaded when a producer
// library is opened from it, or when a control function names a camera of a
// file on GENICAM_GENTL64_PATH that is not loaded yet, so tests can act on a
// camera before the library starts. Loading the same path again reuses its
// cameras unless the file changed; the last close forgets them all, as an
// unloaded producer forgets its devices.
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
  // Forgets every loaded file; the caller lets the cameras go outside its locks.
  std::vector<std::shared_ptr<LoadedFile>> Forget();

 private:
  std::vector<std::shared_ptr<SimCamera>> FindLoaded(const std::string& deviceId);

  std::mutex mutex_;
  std::unordered_map<std::string, std::shared_ptr<LoadedFile>> files_;
};

}  // namespace oxelsim
