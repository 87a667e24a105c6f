// An opened system: the top of one producer library's transport layer. It
// finds interfaces when asked to update its interface list.
#ifndef OXEL_CORE_SYSTEM_H
#define OXEL_CORE_SYSTEM_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oxel/core/class_creator.h"
#include "oxel/core/discovery_list.h"
#include "oxel/core/event_supporting_module.h"
#include "oxel/core/interface_descriptor.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class ProducerLibrary;

class System : public EventSupportingModule, public std::enable_shared_from_this<System> {
 public:
  using InterfaceFoundCallback = std::function<void(const std::shared_ptr<InterfaceDescriptor>&)>;
  using InterfaceLostCallback = std::function<void(const std::string& key)>;

  System(CreationKey, OXEL_SYSTEM handle, std::weak_ptr<ProducerLibrary> parent);
  ~System() override;

  std::string ID() const { return id_; }
  std::shared_ptr<ProducerLibrary> ParentLibrary() const { return LockParent(parent_); }

  // Asks the C library to refresh the interface list; found and lost
  // interfaces reach the registered callbacks before this returns.
  void UpdateInterfaces(uint64_t timeoutMs);
  // The interface descriptors found and not lost since.
  std::vector<std::shared_ptr<InterfaceDescriptor>> InterfaceDescriptors() const;

  OXEL_CALLBACK_HANDLE RegisterInterfaceFoundCallback(InterfaceFoundCallback callback);
  void UnregisterInterfaceFoundCallback(OXEL_CALLBACK_HANDLE handle);
  OXEL_CALLBACK_HANDLE RegisterInterfaceLostCallback(InterfaceLostCallback callback);
  void UnregisterInterfaceLostCallback(OXEL_CALLBACK_HANDLE handle);

  OXEL_SYSTEM Handle() const { return handle_; }

 protected:
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_SYSTEM handle_;
  const std::weak_ptr<ProducerLibrary> parent_;
  const std::string id_;
  DiscoveryList<System, InterfaceDescriptor, OXEL_INTERFACE_DESCRIPTOR> interfaces_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_SYSTEM_H
