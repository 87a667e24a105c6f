// An opened producer file and the system it describes. Closing follows the
// GenTL tree: releasing a producer library closes its system, which closes its
// interfaces, their devices and their data streams; every handle below dies.
// Functions named ...Locked expect the simulator's mutex to be held.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/api.h"
#include "core/module.h"
#include "producer/hardware.h"

namespace oxelsim {

class InterfaceDescriptor;
class System;

class SystemDescriptor : public std::enable_shared_from_this<SystemDescriptor> {
 public:
  explicit SystemDescriptor(std::shared_ptr<LoadedFile> file) : file_(std::move(file)) {}

  const SystemDescription& Description() const { return file_->description; }
  // Fails with BAD_ACCESS when the system is open already.
  std::shared_ptr<System> Open();
  void CloseLocked();
  void SystemClosedLocked() { opened_.reset(); }

 private:
  std::shared_ptr<LoadedFile> file_;
  std::shared_ptr<System> opened_;
};

class System : public Module, public std::enable_shared_from_this<System> {
 public:
  System(std::shared_ptr<LoadedFile> file, std::weak_ptr<SystemDescriptor> origin);

  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;
  const SystemDescription& Description() const { return file_->description; }

  // Reports every interface not reported yet through the found callbacks.
  void UpdateInterfaces();
  void CloseLocked();

  CallbackList<OXEL_InterfaceFoundCallback> found;
  CallbackList<OXEL_InterfaceLostCallback> lost;

 private:
  std::shared_ptr<LoadedFile> file_;
  std::weak_ptr<SystemDescriptor> origin_;
  std::shared_ptr<NodeMap> info_;
  std::vector<std::shared_ptr<InterfaceDescriptor>> interfaces_;
  bool closed_ = false;
};

class ProducerLibrary : public std::enable_shared_from_this<ProducerLibrary> {
 public:
  // Loads the file; fails with CTI_LOADING_ERROR.
  static std::shared_ptr<ProducerLibrary> Open(const std::string& path);

  const std::string& Path() const { return path_; }
  const std::string& Vendor() const { return file_->description.vendor; }
  const std::shared_ptr<SystemDescriptor>& SystemHandle() const { return system_; }
  void Release();

 private:
  ProducerLibrary(std::string path, std::shared_ptr<LoadedFile> file);

  std::string path_;
  std::shared_ptr<LoadedFile> file_;
  std::shared_ptr<SystemDescriptor> system_;
  bool released_ = false;
};

// "what 'x' of where" texts for errors about a closed or opened module.
[[noreturn]] void FailAlreadyOpen(const std::string& what);

}  // namespace oxelsim
