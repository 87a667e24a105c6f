#include "oxel/core/system_descriptor.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"
#include "oxel/core/system.h"

namespace oxel::core {

SystemDescriptor::SystemDescriptor(CreationKey, OXEL_SYSTEM_DESCRIPTOR handle,
                                   std::weak_ptr<ProducerLibrary> parent)
    : ModuleDescriptor(QueryText([handle](char* text, size_t* size) {
        return Api().OXEL_SystemDescriptor_GetID(handle, text, size);
      })),
      handle_(handle),
      parent_(std::move(parent)) {}

std::string SystemDescriptor::DisplayName() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_SystemDescriptor_GetDisplayName(handle_, text, size);
  });
}

std::shared_ptr<System> SystemDescriptor::OpenSystem() {
  const auto handle = QueryValue<OXEL_SYSTEM>(
      [this](OXEL_SYSTEM* out) { return Api().OXEL_SystemDescriptor_OpenSystem(handle_, out); });
  return CreateOwner<System>(
      handle, [](OXEL_SYSTEM system) { Api().OXEL_System_Close(system); }, parent_);
}

}  // namespace oxel::core
