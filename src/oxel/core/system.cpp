#include "oxel/core/system.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

System::System(CreationKey, OXEL_SYSTEM handle, std::weak_ptr<ProducerLibrary> parent)
    : handle_(handle),
      parent_(std::move(parent)),
      id_(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_System_GetID(handle, text, size);
      })) {}

System::~System() {
  CallCheckedInDestructor([this] { return Api().OXEL_System_Close(handle_); });
}

void System::UpdateInterfaces(uint64_t timeoutMs) {
  interfaces_.Update([&] { return Api().OXEL_System_UpdateInterfaces(handle_, timeoutMs); });
}

std::vector<std::shared_ptr<InterfaceDescriptor>> System::InterfaceDescriptors() const {
  return interfaces_.Known();
}

OXEL_CALLBACK_HANDLE System::RegisterInterfaceFoundCallback(InterfaceFoundCallback callback) {
  return interfaces_.RegisterFound(
      shared_from_this(), std::move(callback),
      [this](OXEL_InterfaceFoundCallback trampoline, void* context, OXEL_CALLBACK_HANDLE* out) {
        return Api().OXEL_System_RegisterInterfaceFoundCallback(handle_, trampoline, context, out);
      });
}

void System::UnregisterInterfaceFoundCallback(OXEL_CALLBACK_HANDLE handle) {
  interfaces_.UnregisterFound(handle, [this](OXEL_CALLBACK_HANDLE callback) {
    return Api().OXEL_System_UnregisterInterfaceFoundCallback(handle_, callback);
  });
}

OXEL_CALLBACK_HANDLE System::RegisterInterfaceLostCallback(InterfaceLostCallback callback) {
  return interfaces_.RegisterLost(
      shared_from_this(), std::move(callback),
      [this](OXEL_InterfaceLostCallback trampoline, void* context, OXEL_CALLBACK_HANDLE* out) {
        return Api().OXEL_System_RegisterInterfaceLostCallback(handle_, trampoline, context, out);
      });
}

void System::UnregisterInterfaceLostCallback(OXEL_CALLBACK_HANDLE handle) {
  interfaces_.UnregisterLost(handle, [this](OXEL_CALLBACK_HANDLE callback) {
    return Api().OXEL_System_UnregisterInterfaceLostCallback(handle_, callback);
  });
}

OXEL_MODULE System::ModuleHandle() const {
  return QueryValue<OXEL_MODULE>(
      [this](OXEL_MODULE* out) { return Api().OXEL_System_ToModule(handle_, out); });
}

}  // namespace oxel::core
