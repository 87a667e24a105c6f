// An opened interface (a bus or port of a system). It finds devices when
// asked to update its device list.
#ifndef OXEL_CORE_INTERFACE_H
#define OXEL_CORE_INTERFACE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oxel/core/class_creator.h"
#include "oxel/core/device_descriptor.h"
#include "oxel/core/discovery_list.h"
#include "oxel/core/event_supporting_module.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class System;

class Interface : public EventSupportingModule, public std::enable_shared_from_this<Interface> {
 public:
  using DeviceFoundCallback = std::function<void(const std::shared_ptr<DeviceDescriptor>&)>;
  using DeviceLostCallback = std::function<void(const std::string& key)>;

  Interface(CreationKey, OXEL_INTERFACE handle, std::weak_ptr<System> parent);
  ~Interface() override;

  std::string ID() const { return id_; }
  std::string DisplayName() const;
  std::shared_ptr<System> ParentSystem() const { return LockParent(parent_); }

  // Asks the C library to refresh the device list; found and lost devices
  // reach the registered callbacks before this returns.
  void UpdateDevices(uint64_t timeoutMs);
  // The device descriptors found and not lost since.
  std::vector<std::shared_ptr<DeviceDescriptor>> DeviceDescriptors() const;

  OXEL_CALLBACK_HANDLE RegisterDeviceFoundCallback(DeviceFoundCallback callback);
  void UnregisterDeviceFoundCallback(OXEL_CALLBACK_HANDLE handle);
  OXEL_CALLBACK_HANDLE RegisterDeviceLostCallback(DeviceLostCallback callback);
  void UnregisterDeviceLostCallback(OXEL_CALLBACK_HANDLE handle);

  OXEL_INTERFACE Handle() const { return handle_; }

 protected:
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_INTERFACE handle_;
  const std::weak_ptr<System> parent_;
  const std::string id_;
  DiscoveryList<Interface, DeviceDescriptor, OXEL_DEVICE_DESCRIPTOR> devices_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_INTERFACE_H
