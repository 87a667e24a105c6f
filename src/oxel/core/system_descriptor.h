// The descriptor of a producer library's system.
#ifndef OXEL_CORE_SYSTEM_DESCRIPTOR_H
#define OXEL_CORE_SYSTEM_DESCRIPTOR_H

#include <memory>
#include <string>

#include "oxel/core/class_creator.h"
#include "oxel/core/module_descriptor.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class ProducerLibrary;
class System;

class SystemDescriptor : public ModuleDescriptor {
 public:
  SystemDescriptor(CreationKey, OXEL_SYSTEM_DESCRIPTOR handle,
                   std::weak_ptr<ProducerLibrary> parent);

  std::string DisplayName() const;
  std::shared_ptr<ProducerLibrary> ParentLibrary() const { return LockParent(parent_); }
  std::shared_ptr<System> OpenSystem();
  OXEL_SYSTEM_DESCRIPTOR Handle() const { return handle_; }

 private:
  const OXEL_SYSTEM_DESCRIPTOR handle_;
  const std::weak_ptr<ProducerLibrary> parent_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_SYSTEM_DESCRIPTOR_H
