#include "oxel/core/nodes/float_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

double FloatNode::Value(OXEL_NODE_CACHE_POLICY cachePolicy) {
  return QueryValue<double>(
      [&](double* out) { return Api().OXEL_FloatNode_GetValue(kind_, cachePolicy, out); });
}

void FloatNode::SetValue(double value) {
  CallChecked([&] { return Api().OXEL_FloatNode_SetValue(kind_, value); });
}

double FloatNode::Minimum() {
  return QueryValue<double>(
      [this](double* out) { return Api().OXEL_FloatNode_GetMinimum(kind_, out); });
}

double FloatNode::Maximum() {
  return QueryValue<double>(
      [this](double* out) { return Api().OXEL_FloatNode_GetMaximum(kind_, out); });
}

bool FloatNode::HasConstantIncrement() {
  return QueryValue<OXEL_BOOL8>([this](OXEL_BOOL8* out) {
           return Api().OXEL_FloatNode_GetHasConstantIncrement(kind_, out);
         }) != 0;
}

double FloatNode::Increment() {
  return QueryValue<double>(
      [this](double* out) { return Api().OXEL_FloatNode_GetIncrement(kind_, out); });
}

}  // namespace oxel::core::nodes
