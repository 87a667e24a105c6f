#include "oxel/core/nodes/string_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

std::string StringNode::Value(OXEL_NODE_CACHE_POLICY cachePolicy) {
  return QueryText([&](char* text, size_t* size) {
    return Api().OXEL_StringNode_GetValue(kind_, cachePolicy, text, size);
  });
}

void StringNode::SetValue(const std::string& value) {
  CallChecked(
      [&] { return Api().OXEL_StringNode_SetValue(kind_, value.c_str(), value.size() + 1); });
}

}  // namespace oxel::core::nodes
