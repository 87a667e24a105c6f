// An opened camera: the Aravis device (with range and access checks on), its
// remote device (the camera's features) and its one data stream.
#pragma once

#include <arv.h>

#include <memory>
#include <string>
#include <vector>

#include "core/gobject_ref.h"
#include "core/module.h"
#include "fake/test_picture.h"
#include "transport/bus.h"

namespace oxelarv {

class DataStream;
class Device;

class RemoteDevice : public Module {
 public:
  explicit RemoteDevice(std::shared_ptr<NodeMap> map) : map_(std::move(map)) {}
  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;
  const std::shared_ptr<NodeMap>& Map() const { return map_; }

 private:
  std::shared_ptr<NodeMap> map_;
};

class DataStreamDescriptor : public std::enable_shared_from_this<DataStreamDescriptor> {
 public:
  explicit DataStreamDescriptor(std::weak_ptr<Device> device) : device_(std::move(device)) {}
  std::shared_ptr<DataStream> Open();
  void CloseLocked();
  void StreamClosedLocked() { opened_.reset(); }

 private:
  std::weak_ptr<Device> device_;
  std::shared_ptr<DataStream> opened_;
};

class Device : public Module, public std::enable_shared_from_this<Device> {
 public:
  static std::shared_ptr<Device> Open(const DeviceInfo& info, OXEL_DEVICE_ACCESS_TYPE access,
                                      std::weak_ptr<DeviceDescriptor> origin);
  ~Device() override;

  const std::string& Id() const { return info_.id; }
  const DeviceInfo& Info() const { return info_; }
  const GRef<ArvDevice>& Handle() const { return device_; }
  const std::shared_ptr<RemoteDevice>& Remote() const { return remote_; }
  const std::vector<std::shared_ptr<DataStreamDescriptor>>& Streams() const { return streams_; }
  bool Lost() const;
  void CloseLocked();

 private:
  Device(DeviceInfo info, std::weak_ptr<DeviceDescriptor> origin)
      : info_(std::move(info)), origin_(std::move(origin)) {}

  DeviceInfo info_;
  std::weak_ptr<DeviceDescriptor> origin_;
  GRef<ArvDevice> device_;
  TestPicture picture_;
  std::shared_ptr<RemoteDevice> remote_;
  std::vector<std::shared_ptr<DataStreamDescriptor>> streams_;
  gulong lostHandler_ = 0;
  bool closed_ = false;
};

}  // namespace oxelarv
