// A module's node map as the C interface sees it: one Node per feature, and
// one per entry of each enumeration ("EnumEntry_<Feature>_<Entry>", after
// its enumeration), handed out as handles while the module is open. The
// values live behind a FeatureHost: the camera for a remote device, a small
// read-only set of texts for the other modules.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "camera/camera_features.h"
#include "core/api.h"

namespace oxelsim {

class FeatureHost {
 public:
  virtual ~FeatureHost() = default;
  // Locks the features; fails when they do not answer.
  virtual std::unique_lock<std::mutex> Lock() = 0;
  // With the lock held:
  virtual CameraFeatures& Features() = 0;
  virtual void CheckMayWrite() {}
  virtual void Written() {}
  virtual void Run(const std::string& command) { (void)command; }
};

class NodeMap;

class Node {
 public:
  Node(NodeMap& map, size_t feature, int entry, std::string name, OXEL_NODE_TYPE type)
      : map_(map), feature_(feature), entry_(entry), name_(std::move(name)), type_(type) {}

  NodeMap& Map() const { return map_; }
  size_t Feature() const { return feature_; }
  int Entry() const { return entry_; }  // -1 unless an enumeration entry
  const std::string& Name() const { return name_; }
  OXEL_NODE_TYPE Type() const { return type_; }
  std::vector<Node*>& Entries() { return entries_; }

  OXEL_NODE_ACCESS_STATUS Access() const;
  std::string DisplayName() const;
  // With the host's lock held.
  const EnumEntryDefinition& EntryDefinition() const;

  // Reads under the host's lock.
  template <class Result>
  Result Read(const std::function<Result(CameraFeatures&)>& read) const;
  // Writes under the host's lock, then tells this node's callbacks.
  void Write(const std::function<void(CameraFeatures&)>& write);
  void Execute();

  CallbackList<OXEL_NodeChangedCallback>& Callbacks() { return callbacks_; }

 private:
  void NotifyChanged();

  NodeMap& map_;
  size_t feature_;
  int entry_;
  std::string name_;
  OXEL_NODE_TYPE type_;
  std::vector<Node*> entries_;
  CallbackList<OXEL_NodeChangedCallback> callbacks_;
};

class NodeMap : public std::enable_shared_from_this<NodeMap> {
 public:
  explicit NodeMap(std::shared_ptr<FeatureHost> host);
  ~NodeMap();

  // Files the map and its nodes as live handles, or withdraws them.
  void Register();
  void Unregister();

  size_t Count() const { return nodes_.size(); }
  Node& At(size_t index) const;
  // Fails with NOT_FOUND.
  Node& Find(const std::string& name) const;
  FeatureHost& Host() const { return *host_; }
  std::string Owner() const;

 private:
  std::shared_ptr<FeatureHost> host_;
  std::vector<std::unique_ptr<Node>> nodes_;
  std::unordered_map<std::string, Node*> byName_;
  bool registered_ = false;
};

// A node map of read-only texts (a module's identity), such as
// {"DeviceID", "..."}.
std::shared_ptr<NodeMap> MakeInfoNodeMap(
    const std::string& owner, const std::vector<std::pair<std::string, std::string>>& texts);

template <class Result>
Result Node::Read(const std::function<Result(CameraFeatures&)>& read) const {
  FeatureHost& host = map_.Host();
  std::unique_lock lock = host.Lock();
  return read(host.Features());
}

}  // namespace oxelsim
