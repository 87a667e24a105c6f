// An integer feature with its range and increment.
#ifndef OXEL_CORE_NODES_INTEGER_NODE_H
#define OXEL_CORE_NODES_INTEGER_NODE_H

#include <cstdint>

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class IntegerNode : public Node {
 public:
  IntegerNode(CreationKey key, NodeInit init, OXEL_INTEGER_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  int64_t Value(OXEL_NODE_CACHE_POLICY cachePolicy = OXEL_NODE_CACHE_POLICY_USE_CACHE);
  void SetValue(int64_t value);
  int64_t Minimum();
  int64_t Maximum();
  int64_t Increment();

 private:
  const OXEL_INTEGER_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_INTEGER_NODE_H
