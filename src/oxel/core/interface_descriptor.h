// The descriptor of an interface that a system found.
#ifndef OXEL_CORE_INTERFACE_DESCRIPTOR_H
#define OXEL_CORE_INTERFACE_DESCRIPTOR_H

#include <memory>
#include <mutex>
#include <string>

#include "oxel/core/class_creator.h"
#include "oxel/core/module_descriptor.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class Interface;
class System;

class InterfaceDescriptor : public ModuleDescriptor {
 public:
  InterfaceDescriptor(CreationKey, OXEL_INTERFACE_DESCRIPTOR handle, std::weak_ptr<System> parent);

  std::string DisplayName() const;
  std::shared_ptr<System> ParentSystem() const { return LockParent(parent_); }
  // Opens the interface and remembers it (weakly).
  std::shared_ptr<Interface> OpenInterface();
  // The interface last opened from this descriptor, if it still exists.
  std::shared_ptr<Interface> OpenedInterface() const;
  OXEL_INTERFACE_DESCRIPTOR Handle() const { return handle_; }

 private:
  const OXEL_INTERFACE_DESCRIPTOR handle_;
  const std::weak_ptr<System> parent_;
  mutable std::mutex openedMutex_;
  std::weak_ptr<Interface> opened_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_INTERFACE_DESCRIPTOR_H
