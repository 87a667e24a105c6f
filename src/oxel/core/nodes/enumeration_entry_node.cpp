#include "oxel/core/nodes/enumeration_entry_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

std::string EnumerationEntryNode::SymbolicValue() {
  return QueryText([this](char* text, size_t* size) {
    return Api().OXEL_EnumerationEntryNode_GetSymbolicValue(kind_, text, size);
  });
}

int64_t EnumerationEntryNode::Value() {
  return QueryValue<int64_t>(
      [this](int64_t* out) { return Api().OXEL_EnumerationEntryNode_GetValue(kind_, out); });
}

}  // namespace oxel::core::nodes
