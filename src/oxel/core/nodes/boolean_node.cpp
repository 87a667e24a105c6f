#include "oxel/core/nodes/boolean_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

bool BooleanNode::Value(OXEL_NODE_CACHE_POLICY cachePolicy) {
  return QueryValue<OXEL_BOOL8>([&](OXEL_BOOL8* out) {
           return Api().OXEL_BooleanNode_GetValue(kind_, cachePolicy, out);
         }) != 0;
}

void BooleanNode::SetValue(bool value) {
  CallChecked([&] { return Api().OXEL_BooleanNode_SetValue(kind_, value ? 1 : 0); });
}

}  // namespace oxel::core::nodes
