// Builds the node object of the class that matches a node's kind.
#ifndef OXEL_CORE_NODES_NODE_FACTORY_H
#define OXEL_CORE_NODES_NODE_FACTORY_H

#include <memory>

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

// Asks the node's kind and name; an unknown kind gives a plain Node.
std::shared_ptr<Node> MakeNode(OXEL_NODE handle, std::weak_ptr<NodeMap> nodeMap);

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_NODE_FACTORY_H
