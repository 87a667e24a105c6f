#include "oxel/core/nodes/node_factory.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/nodes/boolean_node.h"
#include "oxel/core/nodes/category_node.h"
#include "oxel/core/nodes/command_node.h"
#include "oxel/core/nodes/enumeration_entry_node.h"
#include "oxel/core/nodes/enumeration_node.h"
#include "oxel/core/nodes/float_node.h"
#include "oxel/core/nodes/integer_node.h"
#include "oxel/core/nodes/register_node.h"
#include "oxel/core/nodes/string_node.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {
namespace {

// Casts the node to its kind handle and builds a T around both.
template <typename T, typename KindHandle>
std::shared_ptr<Node> MakeTyped(NodeInit init,
                                OXEL_RETURN_CODE (*OxelFunctions::*cast)(OXEL_NODE, KindHandle*)) {
  const auto call = Api().*cast;
  const auto kind = QueryValue<KindHandle>([&](KindHandle* out) { return call(init.handle, out); });
  return ClassCreator<T>::Create(std::move(init), kind);
}

}  // namespace

std::shared_ptr<Node> MakeNode(OXEL_NODE handle, std::weak_ptr<NodeMap> nodeMap) {
  NodeInit init;
  init.handle = handle;
  init.type = QueryValue<OXEL_NODE_TYPE>(
      [&](OXEL_NODE_TYPE* out) { return Api().OXEL_Node_GetType(handle, out); });
  init.name = QueryText(
      [&](char* text, size_t* size) { return Api().OXEL_Node_GetName(handle, text, size); });
  init.nodeMap = std::move(nodeMap);
  using F = OxelFunctions;
  switch (init.type) {
    case OXEL_NODE_TYPE_INTEGER:
      return MakeTyped<IntegerNode>(std::move(init), &F::OXEL_Node_ToIntegerNode);
    case OXEL_NODE_TYPE_BOOLEAN:
      return MakeTyped<BooleanNode>(std::move(init), &F::OXEL_Node_ToBooleanNode);
    case OXEL_NODE_TYPE_COMMAND:
      return MakeTyped<CommandNode>(std::move(init), &F::OXEL_Node_ToCommandNode);
    case OXEL_NODE_TYPE_FLOAT:
      return MakeTyped<FloatNode>(std::move(init), &F::OXEL_Node_ToFloatNode);
    case OXEL_NODE_TYPE_STRING:
      return MakeTyped<StringNode>(std::move(init), &F::OXEL_Node_ToStringNode);
    case OXEL_NODE_TYPE_REGISTER:
      return MakeTyped<RegisterNode>(std::move(init), &F::OXEL_Node_ToRegisterNode);
    case OXEL_NODE_TYPE_CATEGORY:
      return MakeTyped<CategoryNode>(std::move(init), &F::OXEL_Node_ToCategoryNode);
    case OXEL_NODE_TYPE_ENUMERATION:
      return MakeTyped<EnumerationNode>(std::move(init), &F::OXEL_Node_ToEnumerationNode);
    case OXEL_NODE_TYPE_ENUMERATION_ENTRY:
      return MakeTyped<EnumerationEntryNode>(std::move(init), &F::OXEL_Node_ToEnumerationEntryNode);
    default:
      return ClassCreator<Node>::Create(std::move(init));
  }
}

}  // namespace oxel::core::nodes
