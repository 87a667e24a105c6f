// An opened module of the transport layer (system, interface, device, remote
// device, data stream, buffer): what all of them share is their node maps,
// built on first use.
#ifndef OXEL_CORE_MODULE_H
#define OXEL_CORE_MODULE_H

#include <memory>
#include <vector>

#include "oxel/core/init_once.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class NodeMap;

class Module : public InitOnce {
 public:
  // The module's node maps in the C library's index order; the same objects
  // on every call.
  std::vector<std::shared_ptr<NodeMap>> NodeMaps();

 protected:
  Module() = default;
  void InitializeOnce() override;
  // The module view of the object's own handle (one C call).
  virtual OXEL_MODULE ModuleHandle() const = 0;

 private:
  std::vector<std::shared_ptr<NodeMap>> nodeMaps_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_MODULE_H
