// Node handles of any kind, and of one kind: a typed handle of another kind
// (an integer node given to a float call) is refused as INVALID_HANDLE.
#pragma once

#include "api/exported.h"
#include "transport/node_map.h"

namespace oxelsim {

template <class Handle>
Ref<Node> FindNodeOfType(Handle handle, OXEL_NODE_TYPE type) {
  Ref<Node> node = FindNode(handle, "node");
  if (node->Type() != type) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE,
         std::string(CurrentFunction()) + ": node '" + node->Name() + "' is a " +
             NodeTypeName(node->Type()) + " node, not a " + NodeTypeName(type) + " node");
  }
  return node;
}

}  // namespace oxelsim
