// The descriptor of a device that an interface found: its identity texts,
// its access status, and the door to opening it.
#ifndef OXEL_CORE_DEVICE_DESCRIPTOR_H
#define OXEL_CORE_DEVICE_DESCRIPTOR_H

#include <memory>
#include <mutex>
#include <string>

#include "oxel/core/callback_list.h"
#include "oxel/core/class_creator.h"
#include "oxel/core/device_access_status.h"
#include "oxel/core/module_descriptor.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class Device;
class Interface;

class DeviceDescriptor : public ModuleDescriptor {
 public:
  using DeviceOpenedCallback = std::function<void(const std::shared_ptr<Device>&)>;

  DeviceDescriptor(CreationKey, OXEL_DEVICE_DESCRIPTOR handle, std::weak_ptr<Interface> parent);

  std::string DisplayName() const;
  std::string ModelName() const;
  std::string SerialNumber() const;
  std::string UserDefinedName() const;
  std::string TLType() const;
  // The interface that found the device; "Pointer has expired!" once it is gone.
  std::shared_ptr<Interface> ParentInterface() const { return LockParent(parent_); }
  OXEL_DEVICE_ACCESS_STATUS AccessStatus() const;
  bool IsOpenable(OXEL_DEVICE_ACCESS_TYPE accessType) const;
  // Opens the device; the device-opened callbacks see it before it is returned.
  std::shared_ptr<Device> OpenDevice(OXEL_DEVICE_ACCESS_TYPE accessType);
  // The device last opened from this descriptor, if it still exists.
  std::shared_ptr<Device> OpenedDevice() const;

  CallbackHandle RegisterDeviceOpenedCallback(DeviceOpenedCallback callback);
  bool UnregisterDeviceOpenedCallback(CallbackHandle handle);

  OXEL_DEVICE_DESCRIPTOR Handle() const { return handle_; }

 private:
  const OXEL_DEVICE_DESCRIPTOR handle_;
  const std::weak_ptr<Interface> parent_;
  mutable std::mutex openedMutex_;
  std::weak_ptr<Device> opened_;
  CallbackList<std::shared_ptr<Device>> deviceOpened_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DEVICE_DESCRIPTOR_H
