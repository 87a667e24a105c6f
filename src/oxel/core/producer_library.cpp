#include "oxel/core/producer_library.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"
#include "oxel/core/system.h"
#include "oxel/core/system_descriptor.h"

namespace oxel::core {

std::shared_ptr<ProducerLibrary> ProducerLibrary::Open(const std::string& path) {
  const auto handle = QueryValue<OXEL_PRODUCER_LIBRARY>([&](OXEL_PRODUCER_LIBRARY* out) {
    return Api().OXEL_ProducerLibrary_Open(path.c_str(), path.size() + 1, out);
  });
  return ClassCreator<ProducerLibrary>::Create(handle, path);
}

ProducerLibrary::ProducerLibrary(CreationKey, OXEL_PRODUCER_LIBRARY handle, std::string path)
    : handle_(handle), path_(std::move(path)) {}

ProducerLibrary::~ProducerLibrary() {
  // The system goes before the library that drives it.
  system_.reset();
  systemDescriptor_.reset();
  CallCheckedInDestructor([this] { return Api().OXEL_ProducerLibrary_Release(handle_); });
}

std::string ProducerLibrary::Vendor() const {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_ProducerLibrary_GetVendor(handle_, text, size);
  });
}

std::shared_ptr<System> ProducerLibrary::System() {
  EnsureInitialized();
  return system_;
}

void ProducerLibrary::InitializeOnce() {
  const auto descriptorHandle =
      QueryValue<OXEL_SYSTEM_DESCRIPTOR>([this](OXEL_SYSTEM_DESCRIPTOR* out) {
        return Api().OXEL_ProducerLibrary_GetSystem(handle_, out);
      });
  auto descriptor = ClassCreator<SystemDescriptor>::Create(descriptorHandle, weak_from_this());
  system_ = descriptor->OpenSystem();
  systemDescriptor_ = std::move(descriptor);
}

}  // namespace oxel::core
