// Base of the descriptors: an object the C library reports before it is
// opened. Its ID, read once when the descriptor is built, is the key by which
// the device manager matches it.
#ifndef OXEL_CORE_MODULE_DESCRIPTOR_H
#define OXEL_CORE_MODULE_DESCRIPTOR_H

#include <string>
#include <utility>

namespace oxel::core {

class ModuleDescriptor {
 public:
  virtual ~ModuleDescriptor() = default;
  ModuleDescriptor(const ModuleDescriptor&) = delete;
  ModuleDescriptor& operator=(const ModuleDescriptor&) = delete;

  std::string ID() const { return id_; }

 protected:
  explicit ModuleDescriptor(std::string id) : id_(std::move(id)) {}

 private:
  const std::string id_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_MODULE_DESCRIPTOR_H
