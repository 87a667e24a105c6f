// One entry of an enumeration feature ("Mono8" of "PixelFormat").
#ifndef OXEL_CORE_NODES_ENUMERATION_ENTRY_NODE_H
#define OXEL_CORE_NODES_ENUMERATION_ENTRY_NODE_H

#include <cstdint>
#include <string>

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class EnumerationEntryNode : public Node {
 public:
  EnumerationEntryNode(CreationKey key, NodeInit init, OXEL_ENUMERATION_ENTRY_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  std::string SymbolicValue();
  int64_t Value();

 private:
  const OXEL_ENUMERATION_ENTRY_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_ENUMERATION_ENTRY_NODE_H
