// An opened camera: the device (transport side, with its data stream
// descriptors) and the remote device (the camera's own feature node map).
#pragma once

#include <memory>
#include <vector>

#include "camera/sim_camera.h"
#include "core/module.h"

namespace oxelsim {

class DataStream;
class DeviceDescriptor;
class NodeMap;

class RemoteDevice : public Module {
 public:
  explicit RemoteDevice(std::shared_ptr<NodeMap> features) : features_(std::move(features)) {}
  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;
  void CloseLocked();

 private:
  std::shared_ptr<NodeMap> features_;
};

class DataStreamDescriptor : public std::enable_shared_from_this<DataStreamDescriptor> {
 public:
  explicit DataStreamDescriptor(std::shared_ptr<CameraSession> session)
      : session_(std::move(session)) {}
  std::shared_ptr<DataStream> Open();
  void CloseLocked();
  void StreamClosedLocked() { opened_.reset(); }

 private:
  std::shared_ptr<CameraSession> session_;
  std::shared_ptr<DataStream> opened_;
};

class Device : public Module, public std::enable_shared_from_this<Device> {
 public:
  // Opens the camera and files the device with its remote device and stream
  // descriptors as handles.
  static std::shared_ptr<Device> Open(SimCamera& camera, OXEL_DEVICE_ACCESS_TYPE access,
                                      std::weak_ptr<DeviceDescriptor> origin);

  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;
  const std::string& Id() const { return session_->Camera().Id(); }
  const std::shared_ptr<RemoteDevice>& Remote() const { return remote_; }
  const std::vector<std::shared_ptr<DataStreamDescriptor>>& Streams() const { return streams_; }
  void CloseLocked();

 private:
  Device(std::shared_ptr<CameraSession> session, std::weak_ptr<DeviceDescriptor> origin);

  std::shared_ptr<CameraSession> session_;
  std::weak_ptr<DeviceDescriptor> origin_;
  std::shared_ptr<NodeMap> info_;
  std::shared_ptr<RemoteDevice> remote_;
  std::vector<std::shared_ptr<DataStreamDescriptor>> streams_;
  bool closed_ = false;
};

}  // namespace oxelsim
