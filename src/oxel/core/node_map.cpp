#include "oxel/core/node_map.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/nodes/node.h"
#include "oxel/core/nodes/node_factory.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

NodeMap::NodeMap(CreationKey, OXEL_NODE_MAP handle) : handle_(handle) {}

std::shared_ptr<nodes::Node> NodeMap::FindNode(const std::string& name) {
  EnsureInitialized();
  QueryValue<OXEL_NODE>([&](OXEL_NODE* out) {
    return Api().OXEL_NodeMap_FindNode(handle_, name.c_str(), name.size() + 1, out);
  });
  return byName_.at(name);
}

std::vector<std::shared_ptr<nodes::Node>> NodeMap::Nodes() {
  EnsureInitialized();
  return nodes_;
}

std::shared_ptr<nodes::Node> NodeMap::CachedNode(const std::string& name) {
  EnsureInitialized();
  return byName_.at(name);
}

void NodeMap::InitializeOnce() {
  const auto count = QueryValue<size_t>(
      [this](size_t* out) { return Api().OXEL_NodeMap_GetNumNodes(handle_, out); });
  std::vector<std::shared_ptr<nodes::Node>> all;
  std::unordered_map<std::string, std::shared_ptr<nodes::Node>> byName;
  all.reserve(count);
  for (size_t index = 0; index < count; ++index) {
    const auto handle = QueryValue<OXEL_NODE>(
        [&](OXEL_NODE* out) { return Api().OXEL_NodeMap_GetNode(handle_, index, out); });
    auto node = nodes::MakeNode(handle, weak_from_this());
    byName.emplace(node->Name(), node);
    all.push_back(std::move(node));
  }
  nodes_ = std::move(all);
  byName_ = std::move(byName);
}

}  // namespace oxel::core
