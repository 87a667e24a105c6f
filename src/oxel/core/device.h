// An opened device: the transport-layer side of a camera. Its remote device
// (the camera's features) and its data stream descriptors are built on first
// use and handed out again afterwards.
#ifndef OXEL_CORE_DEVICE_H
#define OXEL_CORE_DEVICE_H

#include <memory>
#include <string>
#include <vector>

#include "oxel/core/class_creator.h"
#include "oxel/core/data_stream_descriptor.h"
#include "oxel/core/event_supporting_module.h"
#include "oxel/core/remote_device.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class Interface;

class Device : public EventSupportingModule, public std::enable_shared_from_this<Device> {
 public:
  Device(CreationKey, OXEL_DEVICE handle, std::weak_ptr<Interface> parent);
  ~Device() override;

  std::string ID() const { return id_; }
  std::shared_ptr<Interface> ParentInterface() const { return LockParent(parent_); }
  std::shared_ptr<oxel::core::RemoteDevice> RemoteDevice();
  // A copy of the list, in the C library's index order.
  std::vector<std::shared_ptr<DataStreamDescriptor>> DataStreams();

  OXEL_DEVICE Handle() const { return handle_; }

 protected:
  void InitializeOnce() override;
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_DEVICE handle_;
  const std::weak_ptr<Interface> parent_;
  const std::string id_;
  std::shared_ptr<oxel::core::RemoteDevice> remoteDevice_;
  std::vector<std::shared_ptr<DataStreamDescriptor>> dataStreams_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DEVICE_H
