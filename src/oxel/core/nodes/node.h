// A feature of a node map. Node objects are cached by their node map (one per
// feature) and keep only a weak reference to it.
#ifndef OXEL_CORE_NODES_NODE_H
#define OXEL_CORE_NODES_NODE_H

#include <memory>
#include <string>

#include "oxel/core/class_creator.h"
#include "oxel/oxel_c.h"

namespace oxel::core {
class NodeMap;
}

namespace oxel::core::nodes {

// What every node is built from.
struct NodeInit {
  OXEL_NODE handle = nullptr;
  OXEL_NODE_TYPE type = 0;
  std::string name;
  std::weak_ptr<NodeMap> nodeMap;
};

class Node : public std::enable_shared_from_this<Node> {
 public:
  Node(CreationKey, NodeInit init);
  virtual ~Node() = default;
  Node(const Node&) = delete;
  Node& operator=(const Node&) = delete;

  std::string Name() const { return name_; }
  OXEL_NODE_TYPE Type() const { return type_; }
  OXEL_NODE_ACCESS_STATUS AccessStatus() const;
  std::string DisplayName() const;
  // Readable: read-only or read-write; writable: write-only or read-write.
  bool IsReadable() const;
  bool IsWritable() const;

  OXEL_NODE Handle() const { return handle_; }

 protected:
  // "Pointer has expired!" once the node map is gone.
  std::shared_ptr<NodeMap> ParentNodeMap() const { return LockParent(nodeMap_); }

 private:
  const OXEL_NODE handle_;
  const OXEL_NODE_TYPE type_;
  const std::string name_;
  const std::weak_ptr<NodeMap> nodeMap_;
};

// "Integer" ... "EnumerationEntry"; "" for an unknown kind.
std::string NodeTypeText(OXEL_NODE_TYPE type);
// "NotImplemented" ... "ReadWrite"; "NotDefined" for any other value.
std::string NodeAccessStatusText(OXEL_NODE_ACCESS_STATUS status);

}  // namespace oxel::core::nodes

#endif  // OXEL_CORE_NODES_NODE_H
