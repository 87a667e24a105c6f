#include "oxel/core/interface.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

Interface::Interface(CreationKey, OXEL_INTERFACE handle, std::weak_ptr<System> parent)
    : handle_(handle),
      parent_(std::move(parent)),
      id_(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_Interface_GetID(handle, text, size);
      })) {}

Interface::~Interface() {
  CallCheckedInDestructor([this] { return Api().OXEL_Interface_Close(handle_); });
}

std::string Interface::DisplayName() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_Interface_GetDisplayName(handle_, text, size);
  });
}

void Interface::UpdateDevices(uint64_t timeoutMs) {
  devices_.Update([&] { return Api().OXEL_Interface_UpdateDevices(handle_, timeoutMs); });
}

std::vector<std::shared_ptr<DeviceDescriptor>> Interface::DeviceDescriptors() const {
  return devices_.Known();
}

OXEL_CALLBACK_HANDLE Interface::RegisterDeviceFoundCallback(DeviceFoundCallback callback) {
  return devices_.RegisterFound(
      shared_from_this(), std::move(callback),
      [this](OXEL_DeviceFoundCallback trampoline, void* context, OXEL_CALLBACK_HANDLE* out) {
        return Api().OXEL_Interface_RegisterDeviceFoundCallback(handle_, trampoline, context, out);
      });
}

void Interface::UnregisterDeviceFoundCallback(OXEL_CALLBACK_HANDLE handle) {
  devices_.UnregisterFound(handle, [this](OXEL_CALLBACK_HANDLE callback) {
    return Api().OXEL_Interface_UnregisterDeviceFoundCallback(handle_, callback);
  });
}

OXEL_CALLBACK_HANDLE Interface::RegisterDeviceLostCallback(DeviceLostCallback callback) {
  return devices_.RegisterLost(
      shared_from_this(), std::move(callback),
      [this](OXEL_DeviceLostCallback trampoline, void* context, OXEL_CALLBACK_HANDLE* out) {
        return Api().OXEL_Interface_RegisterDeviceLostCallback(handle_, trampoline, context, out);
      });
}

void Interface::UnregisterDeviceLostCallback(OXEL_CALLBACK_HANDLE handle) {
  devices_.UnregisterLost(handle, [this](OXEL_CALLBACK_HANDLE callback) {
    return Api().OXEL_Interface_UnregisterDeviceLostCallback(handle_, callback);
  });
}

OXEL_MODULE Interface::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_Interface_ToModule(handle_, out); });
}

}  // namespace oxel::core
