// A text feature.
#ifndef OXEL_CORE_NODES_STRING_NODE_H
#define OXEL_CORE_NODES_STRING_NODE_H

#include <string>

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class StringNode : public Node {
 public:
  StringNode(CreationKey key, NodeInit init, OXEL_STRING_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  std::string Value(OXEL_NODE_CACHE_POLICY cachePolicy = OXEL_NODE_CACHE_POLICY_USE_CACHE);
  void SetValue(const std::string& value);

 private:
  const OXEL_STRING_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_STRING_NODE_H
