// A floating-point feature with its range and, when constant, its increment.
#ifndef OXEL_CORE_NODES_FLOAT_NODE_H
#define OXEL_CORE_NODES_FLOAT_NODE_H

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class FloatNode : public Node {
 public:
  FloatNode(CreationKey key, NodeInit init, OXEL_FLOAT_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  double Value(OXEL_NODE_CACHE_POLICY cachePolicy = OXEL_NODE_CACHE_POLICY_USE_CACHE);
  void SetValue(double value);
  double Minimum();
  double Maximum();
  bool HasConstantIncrement();
  double Increment();

 private:
  const OXEL_FLOAT_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_FLOAT_NODE_H
