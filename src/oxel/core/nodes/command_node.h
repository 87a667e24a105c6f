// A command feature ("AcquisitionStart", "TriggerSoftware", ...).
#ifndef OXEL_CORE_NODES_COMMAND_NODE_H
#define OXEL_CORE_NODES_COMMAND_NODE_H

#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class CommandNode : public Node {
 public:
  CommandNode(CreationKey key, NodeInit init, OXEL_COMMAND_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  // Starts the command; it does not wait for it to complete.
  void Execute();
  bool IsDone();

 private:
  const OXEL_COMMAND_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_COMMAND_NODE_H
