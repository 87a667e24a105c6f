// The remote device's features: the GenICam node map Aravis built from the
// camera's description, as Oxel nodes. The features are those reachable from
// the "Root" category; each enumeration's entries are nodes too, named
// "EnumEntry_<enumeration>_<entry>" as GenApi names them. Aravis's node map
// is not safe for concurrent use, so every access takes the map's lock.
#pragma once

#include <arv.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/gobject_ref.h"
#include "core/library.h"

namespace oxelarv {

class NodeMap;

struct Node {
  std::string name;
  std::string displayName;
  OXEL_NODE_TYPE type = OXEL_NODE_TYPE_CATEGORY;
  ArvGcFeatureNode* feature = nullptr;  // owned by the map's ArvGc
  std::vector<Node*> entries;           // an enumeration's entries
  Node* enumeration = nullptr;          // an entry's enumeration
  NodeMap* map = nullptr;
  CallbackList<OXEL_NodeChangedCallback> changed;

  // What the functions every library shares ask of a node.
  const std::string& Name() const { return name; }
  OXEL_NODE_TYPE Type() const { return type; }
  CallbackList<OXEL_NodeChangedCallback>& Callbacks() { return changed; }
};

class NodeMap : public std::enable_shared_from_this<NodeMap> {
 public:
  // `owner` names the map in error texts ("camera 'Fake_1'").
  static std::shared_ptr<NodeMap> Build(GRef<ArvDevice> device, std::string owner);
  ~NodeMap();

  const std::string& Owner() const { return owner_; }
  size_t Count() const { return nodes_.size(); }
  Node* At(size_t index) const;
  Node* Find(const std::string& name) const;
  std::recursive_mutex& Mutex() { return mutex_; }

  // Removes the map's handles: closing the device ends them.
  void Unregister();

 private:
  NodeMap(GRef<ArvDevice> device, std::string owner);
  void Add(ArvGcNode* node);

  GRef<ArvDevice> device_;
  std::string owner_;
  std::recursive_mutex mutex_;
  std::vector<std::unique_ptr<Node>> nodes_;
  std::map<std::string, Node*> byName_;
  bool registered_ = false;
};

}  // namespace oxelarv
