#include "transport/device.h"

#include "core/simulator.h"
#include "transport/data_stream.h"
#include "transport/interface.h"
#include "transport/node_map.h"
#include "transport/producer_library.h"

namespace oxelsim {

namespace {

// The camera's features as one opening of it sees them.
class CameraHost : public FeatureHost {
 public:
  explicit CameraHost(std::shared_ptr<CameraSession> session) : session_(std::move(session)) {}

  std::unique_lock<std::mutex> Lock() override {
    std::unique_lock lock(session_->Camera().Mutex());
    session_->Camera().CheckAnswering(*session_);
    return lock;
  }
  CameraFeatures& Features() override { return session_->Camera().Features(); }
  void CheckMayWrite() override {
    if (session_->Access() == OXEL_DEVICE_ACCESS_TYPE_READ_ONLY) {
      Fail(OXEL_RETURN_CODE_BAD_ACCESS, "camera '" + session_->Camera().Id() +
                                            "' was opened read-only: its features cannot be "
                                            "written");
    }
  }
  void Written() override { session_->Camera().Frames().SettingsChanged(); }
  void Run(const std::string& command) override {
    session_->Camera().RunCommand(*session_, command);
  }

 private:
  std::shared_ptr<CameraSession> session_;
};

void FailNodeMapIndex(size_t index) {
  Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node map index " +
                                          std::to_string(index) + " of a module with 1");
}

}  // namespace

std::shared_ptr<NodeMap> RemoteDevice::NodeMapAt(size_t index) const {
  if (index != 0) FailNodeMapIndex(index);
  return features_;
}

void RemoteDevice::CloseLocked() {
  features_->Unregister();
  Simulator::Instance().handles.Remove(this);
}

std::shared_ptr<DataStream> DataStreamDescriptor::Open() {
  std::lock_guard lock(Simulator::Instance().mutex);
  if (opened_) FailAlreadyOpen("the data stream of camera '" + session_->Camera().Id() + "'");
  opened_ = DataStream::Open(session_, weak_from_this());
  return opened_;
}

void DataStreamDescriptor::CloseLocked() {
  // A local reference: closing tells this descriptor, which drops its own.
  if (auto opened = opened_) opened->CloseLocked();
  Simulator::Instance().handles.Remove(this);
}

Device::Device(std::shared_ptr<CameraSession> session, std::weak_ptr<DeviceDescriptor> origin)
    : session_(std::move(session)), origin_(std::move(origin)) {
  const CameraDescription& camera = session_->Camera().Description();
  info_ = MakeInfoNodeMap("device '" + camera.id + "'", {{"DeviceID", camera.id},
                                                         {"DeviceVendorName", camera.vendor},
                                                         {"DeviceModelName", camera.model},
                                                         {"DeviceSerialNumber", camera.serial},
                                                         {"DeviceTLType", camera.tlType}});
}

std::shared_ptr<Device> Device::Open(SimCamera& camera, OXEL_DEVICE_ACCESS_TYPE access,
                                     std::weak_ptr<DeviceDescriptor> origin) {
  std::shared_ptr<CameraSession> session = camera.Open(access);
  std::shared_ptr<Device> device(new Device(session, std::move(origin)));
  auto features = std::make_shared<NodeMap>(std::make_shared<CameraHost>(session));
  features->Register();
  device->remote_ = std::make_shared<RemoteDevice>(features);
  for (size_t i = 0; i < camera.Description().dataStreamCount; ++i) {
    device->streams_.push_back(std::make_shared<DataStreamDescriptor>(session));
  }
  HandleRegistry& handles = Simulator::Instance().handles;
  handles.Add(device.get(), Kind::Device, device, device.get(), static_cast<Module*>(device.get()));
  handles.Add(device->remote_.get(), Kind::RemoteDevice, device->remote_, device->remote_.get(),
              static_cast<Module*>(device->remote_.get()));
  for (const auto& stream : device->streams_) {
    handles.Add(stream.get(), Kind::DataStreamDescriptor, stream, stream.get());
  }
  return device;
}

std::shared_ptr<NodeMap> Device::NodeMapAt(size_t index) const {
  if (index != 0) FailNodeMapIndex(index);
  return info_;
}

void Device::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  for (const auto& stream : streams_) stream->CloseLocked();
  remote_->CloseLocked();
  info_->Unregister();
  session_->Camera().Close(*session_);
  Simulator::Instance().handles.Remove(this);
  if (auto origin = origin_.lock()) origin->DeviceClosedLocked();
}

}  // namespace oxelsim
