// A boolean feature.
#ifndef OXEL_CORE_NODES_BOOLEAN_NODE_H
#define OXEL_CORE_NODES_BOOLEAN_NODE_H

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class BooleanNode : public Node {
 public:
  BooleanNode(CreationKey key, NodeInit init, OXEL_BOOLEAN_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  bool Value(OXEL_NODE_CACHE_POLICY cachePolicy = OXEL_NODE_CACHE_POLICY_USE_CACHE);
  void SetValue(bool value);

 private:
  const OXEL_BOOLEAN_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_BOOLEAN_NODE_H
