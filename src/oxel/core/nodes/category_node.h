// A category (a group of features); only its kind is used.
#ifndef OXEL_CORE_NODES_CATEGORY_NODE_H
#define OXEL_CORE_NODES_CATEGORY_NODE_H

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class CategoryNode : public Node {
 public:
  CategoryNode(CreationKey key, NodeInit init, OXEL_CATEGORY_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  OXEL_CATEGORY_NODE KindHandle() const { return kind_; }

 private:
  const OXEL_CATEGORY_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_CATEGORY_NODE_H
