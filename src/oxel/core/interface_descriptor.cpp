#include "oxel/core/interface_descriptor.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/interface.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

InterfaceDescriptor::InterfaceDescriptor(CreationKey, OXEL_INTERFACE_DESCRIPTOR handle,
                                         std::weak_ptr<System> parent)
    : ModuleDescriptor(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_InterfaceDescriptor_GetID(handle, text, size);
      })),
      handle_(handle),
      parent_(std::move(parent)) {}

std::string InterfaceDescriptor::DisplayName() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_InterfaceDescriptor_GetDisplayName(handle_, text, size);
  });
}

std::shared_ptr<Interface> InterfaceDescriptor::OpenInterface() {
  // The interface's parent is the descriptor's; without it nothing is opened.
  LockParent(parent_);
  const auto handle = QueryValue<OXEL_INTERFACE>([this](OXEL_INTERFACE* out) {
    return Api().OXEL_InterfaceDescriptor_OpenInterface(handle_, out);
  });
  auto opened = CreateOwner<Interface>(
      handle, [](OXEL_INTERFACE interfaceHandle) { Api().OXEL_Interface_Close(interfaceHandle); },
      parent_);
  std::lock_guard lock(openedMutex_);
  opened_ = opened;
  return opened;
}

std::shared_ptr<Interface> InterfaceDescriptor::OpenedInterface() const {
  std::lock_guard lock(openedMutex_);
  return opened_.lock();
}

}  // namespace oxel::core
