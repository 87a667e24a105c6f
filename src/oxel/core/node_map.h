// A module's node map: finds features by name and hands out the one cached
// node object per feature. The cache (all nodes in index order, and a name
// map) is built on first use and read-only afterwards, so look-ups from
// several threads need no lock.
#ifndef OXEL_CORE_NODE_MAP_H
#define OXEL_CORE_NODE_MAP_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "oxel/core/class_creator.h"
#include "oxel/core/exceptions.h"
#include "oxel/core/init_once.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

namespace nodes {
class Node;
}

class NodeMap : public InitOnce, public std::enable_shared_from_this<NodeMap> {
 public:
  NodeMap(CreationKey, OXEL_NODE_MAP handle);

  // The node of that name; the C library's error (NotFoundException) when the
  // map has none.
  std::shared_ptr<nodes::Node> FindNode(const std::string& name);

  // The node as a T; InvalidCastException "Invalid node cast!" when it is of
  // another kind.
  template <typename T>
  std::shared_ptr<T> FindNode(const std::string& name) {
    auto typed = std::dynamic_pointer_cast<T>(FindNode(name));
    if (!typed) {
      throw InvalidCastException(kInvalidNodeCastText);
    }
    return typed;
  }

  // Every node, in the C library's index order.
  std::vector<std::shared_ptr<nodes::Node>> Nodes();
  // The cached node of that name, without asking the C library;
  // std::out_of_range when the cache has none.
  std::shared_ptr<nodes::Node> CachedNode(const std::string& name);

  OXEL_NODE_MAP Handle() const { return handle_; }

 protected:
  void InitializeOnce() override;

 private:
  const OXEL_NODE_MAP handle_;
  std::vector<std::shared_ptr<nodes::Node>> nodes_;
  std::unordered_map<std::string, std::shared_ptr<nodes::Node>> byName_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_NODE_MAP_H
