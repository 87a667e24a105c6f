#include "oxel/core/nodes/integer_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

int64_t IntegerNode::Value(OXEL_NODE_CACHE_POLICY cachePolicy) {
  return QueryValue<int64_t>(
      [&](int64_t* out) { return Api().OXEL_IntegerNode_GetValue(kind_, cachePolicy, out); });
}

void IntegerNode::SetValue(int64_t value) {
  CallChecked([&] { return Api().OXEL_IntegerNode_SetValue(kind_, value); });
}

int64_t IntegerNode::Minimum() {
  return QueryValue<int64_t>(
      [this](int64_t* out) { return Api().OXEL_IntegerNode_GetMinimum(kind_, out); });
}

int64_t IntegerNode::Maximum() {
  return QueryValue<int64_t>(
      [this](int64_t* out) { return Api().OXEL_IntegerNode_GetMaximum(kind_, out); });
}

int64_t IntegerNode::Increment() {
  return QueryValue<int64_t>(
      [this](int64_t* out) { return Api().OXEL_IntegerNode_GetIncrement(kind_, out); });
}

}  // namespace oxel::core::nodes
