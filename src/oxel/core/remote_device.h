// The camera side of a device; its node maps are the camera's features.
#ifndef OXEL_CORE_REMOTE_DEVICE_H
#define OXEL_CORE_REMOTE_DEVICE_H

#include <memory>

#include "oxel/core/class_creator.h"
#include "oxel/core/module.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class Device;

class RemoteDevice : public Module, public std::enable_shared_from_this<RemoteDevice> {
 public:
  RemoteDevice(CreationKey, OXEL_REMOTE_DEVICE handle, std::weak_ptr<Device> parent);

  std::shared_ptr<Device> ParentDevice() const { return LockParent(parent_); }
  OXEL_REMOTE_DEVICE Handle() const { return handle_; }

 protected:
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_REMOTE_DEVICE handle_;
  const std::weak_ptr<Device> parent_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_REMOTE_DEVICE_H
