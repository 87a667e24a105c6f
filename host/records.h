// The records a host owns and hands to the plug-in: one SystemRecord for
// the camera system, zeroed as a fresh allocation, and the setup results.
#pragma once

#include <memory>
#include <string>

#include "plugin.h"
#include "tavro/tavro_host.h"

namespace tavro_host {

// A set-up camera system, torn down when it goes out of scope.
class CameraSystem {
 public:
  // Runs setup with the selection text (empty: every camera). Throws
  // std::runtime_error when setup fails.
  CameraSystem(const Plugin& plugin, const std::string& selection);
  ~CameraSystem();
  CameraSystem(const CameraSystem&) = delete;
  CameraSystem& operator=(const CameraSystem&) = delete;

  SystemRecord& record() { return *system_; }
  const SystemRecord& record() const { return *system_; }
  int cameraCount() const { return system_->iNumCams; }
  // Camera number `number`; throws std::runtime_error when setup did not
  // open that many.
  CameraRecord& camera(int number);
  int widest() const { return widest_; }
  int highest() const { return highest_; }

 private:
  const Plugin& plugin_;
  std::unique_ptr<SystemRecord> system_;
  int widest_ = 0;
  int highest_ = 0;
};

// The text of a name field; names fill their field without a terminator
// when they are that long.
std::string FieldText(const char* field, size_t size);

// One camera's description as the host shows it: key, formats, AOI limits
// and parameter table.
std::string DescribeCamera(const CameraRecord& camera);

}  // namespace tavro_host
