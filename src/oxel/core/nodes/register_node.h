// A register feature; only its kind is used.
#ifndef OXEL_CORE_NODES_REGISTER_NODE_H
#define OXEL_CORE_NODES_REGISTER_NODE_H

#include <cstdint>

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class RegisterNode : public Node {
 public:
  RegisterNode(CreationKey key, NodeInit init, OXEL_REGISTER_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  OXEL_REGISTER_NODE KindHandle() const { return kind_; }

 private:
  const OXEL_REGISTER_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_REGISTER_NODE_H
