// An enumeration feature. Its entries are handed out as the node map's own
// cached entry nodes, so the node map must still exist.
#ifndef OXEL_CORE_NODES_ENUMERATION_NODE_H
#define OXEL_CORE_NODES_ENUMERATION_NODE_H

#include <memory>
#include <string>
#include <vector>

#include "oxel/core/nodes/enumeration_entry_node.h"
#include "oxel/core/nodes/node.h"

namespace oxel::core::nodes {

class EnumerationNode : public Node {
 public:
  EnumerationNode(CreationKey key, NodeInit init, OXEL_ENUMERATION_NODE kind)
      : Node(key, std::move(init)), kind_(kind) {}

  std::shared_ptr<EnumerationEntryNode> CurrentEntry(
      OXEL_NODE_CACHE_POLICY cachePolicy = OXEL_NODE_CACHE_POLICY_USE_CACHE);
  void SetCurrentEntry(const std::string& symbolicValue);
  // Every entry, in the C library's index order.
  std::vector<std::shared_ptr<EnumerationEntryNode>> Entries();

 private:
  std::shared_ptr<EnumerationEntryNode> CachedEntry(OXEL_ENUMERATION_ENTRY_NODE entry);

  const OXEL_ENUMERATION_NODE kind_;
};

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_ENUMERATION_NODE_H
