#include "oxel/core/nodes/enumeration_node.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/node_map.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core::nodes {

std::shared_ptr<EnumerationEntryNode> EnumerationNode::CurrentEntry(
    OXEL_NODE_CACHE_POLICY cachePolicy) {
  return CachedEntry(QueryValue<OXEL_ENUMERATION_ENTRY_NODE>([&](OXEL_ENUMERATION_ENTRY_NODE* out) {
    return Api().OXEL_EnumerationNode_GetCurrentEntry(kind_, cachePolicy, out);
  }));
}

void EnumerationNode::SetCurrentEntry(const std::string& symbolicValue) {
  CallChecked([&] {
    return Api().OXEL_EnumerationNode_SetCurrentEntry(kind_, symbolicValue.c_str(),
                                                      symbolicValue.size() + 1);
  });
}

std::vector<std::shared_ptr<EnumerationEntryNode>> EnumerationNode::Entries() {
  const auto count = QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_EnumerationNode_GetNumEntries(kind_, out); });
  std::vector<std::shared_ptr<EnumerationEntryNode>> entries;
  entries.reserve(count);
  for (size_t index = 0; index < count; ++index) {
    entries.push_back(
        CachedEntry(QueryValue<OXEL_ENUMERATION_ENTRY_NODE>([&](OXEL_ENUMERATION_ENTRY_NODE* out) {
          return Api().OXEL_EnumerationNode_GetEntry(kind_, index, out);
        })));
  }
  return entries;
}

std::shared_ptr<EnumerationEntryNode> EnumerationNode::CachedEntry(
    OXEL_ENUMERATION_ENTRY_NODE entry) {
  const auto node = QueryValue<OXEL_NODE>(
      [&](OXEL_NODE* out) { return Api().OXEL_EnumerationEntryNode_ToNode(entry, out); });
  const std::string name = QueryText(
      [&](char* text, size_t* size) { return Api().OXEL_Node_GetName(node, text, size); });
  auto typed = std::dynamic_pointer_cast<EnumerationEntryNode>(ParentNodeMap()->CachedNode(name));
  if (!typed) {
    throw InvalidCastException(kInvalidNodeCastText);
  }
  return typed;
}

}  // namespace oxel::core::nodes
