// A transport-layer interface (a USB bus, a network card) and the cameras on
// it. Each device update compares the cameras plugged in now with those
// reported before: a camera that is gone (or was unplugged and plugged in
// again since) is reported lost by its device ID, a new one is reported found
// with a new descriptor handle.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "camera/sim_camera.h"
#include "core/api.h"
#include "core/module.h"
#include "producer/hardware.h"

namespace oxelsim {

class Device;
class Interface;
class System;

class DeviceDescriptor : public std::enable_shared_from_this<DeviceDescriptor> {
 public:
  DeviceDescriptor(std::shared_ptr<SimCamera> camera, uint64_t generation)
      : camera_(std::move(camera)), generation_(generation) {}

  SimCamera& Camera() const { return *camera_; }
  uint64_t Generation() const { return generation_; }
  std::shared_ptr<Device> Open(OXEL_DEVICE_ACCESS_TYPE access);
  void CloseLocked();
  void DeviceClosedLocked() { opened_.reset(); }

 private:
  std::shared_ptr<SimCamera> camera_;
  uint64_t generation_;
  std::shared_ptr<Device> opened_;
};

class InterfaceDescriptor : public std::enable_shared_from_this<InterfaceDescriptor> {
 public:
  InterfaceDescriptor(std::shared_ptr<LoadedFile> file, size_t index)
      : file_(std::move(file)), index_(index) {}

  const InterfaceDescription& Description() const { return file_->description.interfaces[index_]; }
  std::shared_ptr<Interface> Open();
  void CloseLocked();
  void InterfaceClosedLocked() { opened_.reset(); }

 private:
  std::shared_ptr<LoadedFile> file_;
  size_t index_;
  std::shared_ptr<Interface> opened_;
};

class Interface : public Module, public std::enable_shared_from_this<Interface> {
 public:
  Interface(std::shared_ptr<LoadedFile> file, size_t index,
            std::weak_ptr<InterfaceDescriptor> origin);

  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;
  const InterfaceDescription& Description() const { return file_->description.interfaces[index_]; }

  void UpdateDevices();
  void CloseLocked();

  CallbackList<OXEL_DeviceFoundCallback> found;
  CallbackList<OXEL_DeviceLostCallback> lost;

 private:
  std::shared_ptr<LoadedFile> file_;
  size_t index_;
  std::weak_ptr<InterfaceDescriptor> origin_;
  std::shared_ptr<NodeMap> info_;
  // Every descriptor given out (they stay valid until the interface closes)
  // and, by device ID, those whose camera was present at the last update.
  std::vector<std::shared_ptr<DeviceDescriptor>> descriptors_;
  std::map<std::string, std::shared_ptr<DeviceDescriptor>> present_;
  bool closed_ = false;
};

}  // namespace oxelsim
