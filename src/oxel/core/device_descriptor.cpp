#include "oxel/core/device_descriptor.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/device.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {
namespace {

using TextCall = OXEL_RETURN_CODE (*)(OXEL_DEVICE_DESCRIPTOR, char*, size_t*);

std::string DescriptorText(OXEL_DEVICE_DESCRIPTOR handle, TextCall OxelFunctions::*member) {
  const TextCall call = Api().*member;
  return QueryText([&](char* text, size_t* size) { return call(handle, text, size); });
}

}  // namespace

DeviceDescriptor::DeviceDescriptor(CreationKey, OXEL_DEVICE_DESCRIPTOR handle,
                                   std::weak_ptr<Interface> parent)
    : ModuleDescriptor(DescriptorText(handle, &OxelFunctions::OXEL_DeviceDescriptor_GetID)),
      handle_(handle),
      parent_(std::move(parent)) {}

std::string DeviceDescriptor::DisplayName() const {
  return DescriptorText(handle_, &OxelFunctions::OXEL_DeviceDescriptor_GetDisplayName);
}

std::string DeviceDescriptor::ModelName() const {
  return DescriptorText(handle_, &OxelFunctions::OXEL_DeviceDescriptor_GetModelName);
}

std::string DeviceDescriptor::SerialNumber() const {
  return DescriptorText(handle_, &OxelFunctions::OXEL_DeviceDescriptor_GetSerialNumber);
}

std::string DeviceDescriptor::UserDefinedName() const {
  return DescriptorText(handle_, &OxelFunctions::OXEL_DeviceDescriptor_GetUserDefinedName);
}

std::string DeviceDescriptor::TLType() const {
  return DescriptorText(handle_, &OxelFunctions::OXEL_DeviceDescriptor_GetTLType);
}

OXEL_DEVICE_ACCESS_STATUS DeviceDescriptor::AccessStatus() const {
  return QueryValue<OXEL_DEVICE_ACCESS_STATUS>([this](OXEL_DEVICE_ACCESS_STATUS* out) {
    return Api().OXEL_DeviceDescriptor_GetAccessStatus(handle_, out);
  });
}

bool DeviceDescriptor::IsOpenable(OXEL_DEVICE_ACCESS_TYPE accessType) const {
  return QueryValue<OXEL_BOOL8>([&](OXEL_BOOL8* out) {
           return Api().OXEL_DeviceDescriptor_IsOpenable(handle_, accessType, out);
         }) != 0;
}

std::shared_ptr<Device> DeviceDescriptor::OpenDevice(OXEL_DEVICE_ACCESS_TYPE accessType) {
  // The device's parent is the descriptor's; without it nothing is opened.
  LockParent(parent_);
  const auto handle = QueryValue<OXEL_DEVICE>([&](OXEL_DEVICE* out) {
    return Api().OXEL_DeviceDescriptor_OpenDevice(handle_, accessType, out);
  });
  auto device = CreateOwner<Device>(
      handle, [](OXEL_DEVICE deviceHandle) { Api().OXEL_Device_Close(deviceHandle); }, parent_);
  {
    std::lock_guard lock(openedMutex_);
    opened_ = device;
  }
  deviceOpened_.Invoke(device);
  return device;
}

std::shared_ptr<Device> DeviceDescriptor::OpenedDevice() const {
  std::lock_guard lock(openedMutex_);
  return opened_.lock();
}

CallbackHandle DeviceDescriptor::RegisterDeviceOpenedCallback(DeviceOpenedCallback callback) {
  return deviceOpened_.Register(std::move(callback));
}

bool DeviceDescriptor::UnregisterDeviceOpenedCallback(CallbackHandle handle) {
  return deviceOpened_.Unregister(handle);
}

}  // namespace oxel::core
