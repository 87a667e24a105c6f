#include "transport/device.h"

#include <map>
#include <mutex>

#include "core/gerror.h"
#include "nodes/node_map.h"
#include "transport/data_stream.h"

namespace oxelarv {

namespace {

// Open streams by Aravis device, for the "control-lost" signal, which Aravis
// emits on a thread of its own and which may come while a device closes.
std::mutex lostMutex;
std::map<const ArvDevice*, std::weak_ptr<DataStream>> streamsByDevice;
std::map<const ArvDevice*, bool> lostDevices;

void ControlLost(ArvDevice* device, gpointer) {
  std::shared_ptr<DataStream> stream;
  {
    std::lock_guard lock(lostMutex);
    lostDevices[device] = true;
    auto found = streamsByDevice.find(device);
    if (found != streamsByDevice.end()) stream = found->second.lock();
  }
  if (stream) stream->Lose();
}

}  // namespace

std::shared_ptr<NodeMap> RemoteDevice::NodeMapAt(size_t index) const {
  if (index != 0) Module::NodeMapAt(index);
  return map_;
}

std::shared_ptr<DataStream> DataStreamDescriptor::Open() {
  std::lock_guard lock(Library::Instance().mutex);
  auto device = device_.lock();
  if (!device) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE,
         std::string(CurrentFunction()) + ": the camera of this data stream is closed");
  }
  if (opened_) FailAlreadyOpen("data stream 'Stream0' of camera '" + device->Id() + "'");
  if (device->Lost()) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": camera '" + device->Id() + "' was lost");
  }
  opened_ = DataStream::Open(device->Handle(), device->Id(), weak_from_this());
  {
    std::lock_guard lostLock(lostMutex);
    streamsByDevice[device->Handle().get()] = opened_;
  }
  return opened_;
}

void DataStreamDescriptor::CloseLocked() {
  if (auto opened = opened_) opened->CloseLocked();
  Library::Instance().handles.Remove(this);
}

std::shared_ptr<Device> Device::Open(const DeviceInfo& info, OXEL_DEVICE_ACCESS_TYPE access,
                                     std::weak_ptr<DeviceDescriptor> origin) {
  if (access != OXEL_DEVICE_ACCESS_TYPE_READ_ONLY && access != OXEL_DEVICE_ACCESS_TYPE_CONTROL &&
      access != OXEL_DEVICE_ACCESS_TYPE_EXCLUSIVE) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": access type " +
                                                std::to_string(access) +
                                                " (2 read-only, 3 control or 4 exclusive)");
  }
  std::shared_ptr<Device> device(new Device(info, std::move(origin)));
  GError* error = nullptr;
  device->device_ = GRef<ArvDevice>(arv_open_device(info.id.c_str(), &error));
  if (!device->device_) {
    FailOnError(error, OXEL_RETURN_CODE_BAD_ACCESS,
                "camera '" + info.id + "' cannot be opened (in use or unreachable)");
    Fail(OXEL_RETURN_CODE_BAD_ACCESS,
         std::string(CurrentFunction()) + ": camera '" + info.id + "' cannot be opened");
  }
  // Aravis writes any value to any feature unless told to check: a write out
  // of range or to a locked feature must fail as on any GenTL producer.
  arv_device_set_range_check_policy(device->device_.get(), ARV_RANGE_CHECK_POLICY_ENABLE);
  arv_device_set_access_check_policy(device->device_.get(), ARV_ACCESS_CHECK_POLICY_ENABLE);
  if (ARV_IS_FAKE_DEVICE(device->device_.get())) {
    device->picture_.Install(
        arv_fake_device_get_fake_camera(ARV_FAKE_DEVICE(device->device_.get())));
  }
  {
    std::lock_guard lock(lostMutex);
    lostDevices.erase(device->device_.get());
  }
  device->lostHandler_ =
      g_signal_connect(device->device_.get(), "control-lost", G_CALLBACK(ControlLost), nullptr);
  device->remote_ =
      std::make_shared<RemoteDevice>(NodeMap::Build(device->device_, "camera '" + info.id + "'"));
  device->streams_.push_back(std::make_shared<DataStreamDescriptor>(device));

  HandleRegistry& handles = Library::Instance().handles;
  handles.Add(device.get(), Kind::Device, device, device.get(), static_cast<Module*>(device.get()));
  handles.Add(device->remote_.get(), Kind::RemoteDevice, device->remote_, device->remote_.get(),
              static_cast<Module*>(device->remote_.get()));
  for (const auto& stream : device->streams_) {
    handles.Add(stream.get(), Kind::DataStreamDescriptor, stream, stream.get());
  }
  return device;
}

Device::~Device() {
  picture_.Remove();
  if (lostHandler_ != 0 && device_) g_signal_handler_disconnect(device_.get(), lostHandler_);
  std::lock_guard lock(lostMutex);
  streamsByDevice.erase(device_.get());
  lostDevices.erase(device_.get());
}

bool Device::Lost() const {
  std::lock_guard lock(lostMutex);
  auto found = lostDevices.find(device_.get());
  return found != lostDevices.end() && found->second;
}

void Device::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  for (const auto& stream : streams_) stream->CloseLocked();
  HandleRegistry& handles = Library::Instance().handles;
  remote_->Map()->Unregister();
  handles.Remove(remote_.get());
  handles.Remove(this);
  if (auto origin = origin_.lock()) origin->DeviceClosedLocked();
}

}  // namespace oxelarv
