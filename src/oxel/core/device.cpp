#include "oxel/core/device.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

Device::Device(CreationKey, OXEL_DEVICE handle, std::weak_ptr<Interface> parent)
    : handle_(handle),
      parent_(std::move(parent)),
      id_(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_Device_GetID(handle, text, size);
      })) {}

Device::~Device() {
  // The children hold only weak references to the device; drop ours before
  // the handle goes so that nothing of it outlives the close.
  dataStreams_.clear();
  remoteDevice_.reset();
  CallCheckedInDestructor([this] { return Api().OXEL_Device_Close(handle_); });
}

std::shared_ptr<RemoteDevice> Device::RemoteDevice() {
  EnsureInitialized();
  return remoteDevice_;
}

std::vector<std::shared_ptr<DataStreamDescriptor>> Device::DataStreams() {
  EnsureInitialized();
  return dataStreams_;
}

void Device::InitializeOnce() {
  Module::InitializeOnce();
  const auto remoteHandle = QueryValue<OXEL_REMOTE_DEVICE>(
      [this](OXEL_REMOTE_DEVICE* out) { return Api().OXEL_Device_GetRemoteDevice(handle_, out); });
  auto remote = ClassCreator<oxel::core::RemoteDevice>::Create(remoteHandle, weak_from_this());
  const auto count = QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_Device_GetNumDataStreams(handle_, out); });
  std::vector<std::shared_ptr<DataStreamDescriptor>> dataStreams;
  dataStreams.reserve(count);
  for (size_t index = 0; index < count; ++index) {
    const auto descriptor =
        QueryValue<OXEL_DATA_STREAM_DESCRIPTOR>([&](OXEL_DATA_STREAM_DESCRIPTOR* out) {
          return Api().OXEL_Device_GetDataStreamDescriptor(handle_, index, out);
        });
    dataStreams.push_back(ClassCreator<DataStreamDescriptor>::Create(descriptor, weak_from_this()));
  }
  remoteDevice_ = std::move(remote);
  dataStreams_ = std::move(dataStreams);
}

OXEL_MODULE Device::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_Device_ToModule(handle_, out); });
}

}  // namespace oxel::core
