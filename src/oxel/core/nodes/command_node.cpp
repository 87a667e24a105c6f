#include "oxel/core/nodes/command_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

void CommandNode::Execute() {
  CallChecked([this] { return Api().OXEL_CommandNode_Execute(kind_); });
}

bool CommandNode::IsDone() {
  return QueryValue<OXEL_BOOL8>(
             [this](OXEL_BOOL8* out) { return Api().OXEL_CommandNode_GetIsDone(kind_, out); }) != 0;
}

}  // namespace oxel::core::nodes
