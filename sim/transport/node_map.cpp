#include "transport/node_map.h"

#include "core/api.h"
#include "core/simulator.h"

namespace oxelsim {

namespace {

class InfoHost : public FeatureHost {
 public:
  InfoHost(const std::string& owner, const std::vector<std::pair<std::string, std::string>>& texts)
      : description_(Describe(owner, texts)), features_(description_, owner) {}

  std::unique_lock<std::mutex> Lock() override { return std::unique_lock(mutex_); }
  CameraFeatures& Features() override { return features_; }

 private:
  static CameraDescription Describe(const std::string& owner,
                                    const std::vector<std::pair<std::string, std::string>>& texts) {
    CameraDescription description;
    description.id = owner;
    for (const auto& [name, text] : texts) {
      FeatureDefinition definition;
      definition.name = name;
      definition.type = OXEL_NODE_TYPE_STRING;
      definition.access = OXEL_NODE_ACCESS_STATUS_READ_ONLY;
      definition.slots[""].text = text;
      description.features.push_back(definition);
    }
    return description;
  }

  CameraDescription description_;
  CameraFeatures features_;
  std::mutex mutex_;
};

}  // namespace

OXEL_NODE_ACCESS_STATUS Node::Access() const {
  return Read<OXEL_NODE_ACCESS_STATUS>([&](CameraFeatures& features) {
    if (entry_ < 0) return features.Access(feature_);
    const bool available =
        features.Definition(feature_).entries[static_cast<size_t>(entry_)].available;
    return static_cast<OXEL_NODE_ACCESS_STATUS>(available ? OXEL_NODE_ACCESS_STATUS_READ_ONLY
                                                          : OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE);
  });
}

std::string Node::DisplayName() const {
  if (entry_ < 0) return DisplayNameOf(name_);
  return Read<std::string>([&](CameraFeatures&) { return EntryDefinition().symbolic; });
}

const EnumEntryDefinition& Node::EntryDefinition() const {
  return map_.Host().Features().Definition(feature_).entries[static_cast<size_t>(entry_)];
}

void Node::Write(const std::function<void(CameraFeatures&)>& write) {
  {
    FeatureHost& host = map_.Host();
    std::unique_lock lock = host.Lock();
    host.CheckMayWrite();
    write(host.Features());
    host.Written();
  }
  NotifyChanged();
}

void Node::Execute() {
  {
    FeatureHost& host = map_.Host();
    std::unique_lock lock = host.Lock();
    host.CheckMayWrite();
    host.Features().BeginWrite(feature_);
    host.Run(name_);
    host.Written();
  }
  NotifyChanged();
}

void Node::NotifyChanged() {
  for (const auto& entry : callbacks_.Snapshot()) {
    entry->function(reinterpret_cast<OXEL_NODE>(this), entry->context);
  }
}

NodeMap::NodeMap(std::shared_ptr<FeatureHost> host) : host_(std::move(host)) {
  std::unique_lock lock = host_->Lock();
  CameraFeatures& features = host_->Features();
  for (size_t i = 0; i < features.Count(); ++i) {
    const FeatureDefinition& definition = features.Definition(i);
    nodes_.push_back(std::make_unique<Node>(*this, i, -1, definition.name, definition.type));
    Node* feature = nodes_.back().get();
    for (size_t e = 0; e < definition.entries.size(); ++e) {
      nodes_.push_back(std::make_unique<Node>(
          *this, i, static_cast<int>(e),
          "EnumEntry_" + definition.name + "_" + definition.entries[e].symbolic,
          OXEL_NODE_TYPE_ENUMERATION_ENTRY));
      feature->Entries().push_back(nodes_.back().get());
    }
  }
  for (const auto& node : nodes_) byName_[node->Name()] = node.get();
}

NodeMap::~NodeMap() {
  Unregister();
}

void NodeMap::Register() {
  HandleRegistry& handles = Simulator::Instance().handles;
  handles.Add(this, Kind::NodeMap, weak_from_this(), this);
  for (const auto& node : nodes_) handles.Add(node.get(), Kind::Node, weak_from_this(), node.get());
  registered_ = true;
}

void NodeMap::Unregister() {
  if (!registered_) return;
  HandleRegistry& handles = Simulator::Instance().handles;
  handles.Remove(this);
  for (const auto& node : nodes_) handles.Remove(node.get());
  registered_ = false;
}

Node& NodeMap::At(size_t index) const {
  if (index >= nodes_.size()) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
         std::string(CurrentFunction()) + ": node index " + std::to_string(index) + " of " +
             Owner() + ", which has " + std::to_string(nodes_.size()) + " nodes");
  }
  return *nodes_[index];
}

Node& NodeMap::Find(const std::string& name) const {
  auto found = byName_.find(name);
  if (found == byName_.end()) {
    Fail(OXEL_RETURN_CODE_NOT_FOUND, "no node '" + name + "' in the node map of " + Owner());
  }
  return *found->second;
}

std::string NodeMap::Owner() const {
  return host_->Features().Owner();
}

std::shared_ptr<NodeMap> MakeInfoNodeMap(
    const std::string& owner, const std::vector<std::pair<std::string, std::string>>& texts) {
  auto map = std::make_shared<NodeMap>(std::make_shared<InfoHost>(owner, texts));
  map->Register();
  return map;
}

}  // namespace oxelsim
