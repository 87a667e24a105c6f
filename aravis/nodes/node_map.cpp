#include "nodes/node_map.h"

namespace oxelarv {

namespace {

OXEL_NODE_TYPE TypeOf(ArvGcNode* node) {
  if (ARV_IS_GC_ENUM_ENTRY(node)) return OXEL_NODE_TYPE_ENUMERATION_ENTRY;
  if (ARV_IS_GC_ENUMERATION(node)) return OXEL_NODE_TYPE_ENUMERATION;
  if (ARV_IS_GC_COMMAND(node)) return OXEL_NODE_TYPE_COMMAND;
  if (ARV_IS_GC_BOOLEAN(node)) return OXEL_NODE_TYPE_BOOLEAN;
  if (ARV_IS_GC_CATEGORY(node)) return OXEL_NODE_TYPE_CATEGORY;
  if (G_OBJECT_TYPE(node) == ARV_TYPE_GC_REGISTER_NODE) return OXEL_NODE_TYPE_REGISTER;
  if (ARV_IS_GC_FLOAT(node)) return OXEL_NODE_TYPE_FLOAT;
  if (ARV_IS_GC_INTEGER(node)) return OXEL_NODE_TYPE_INTEGER;
  if (ARV_IS_GC_STRING(node)) return OXEL_NODE_TYPE_STRING;
  return OXEL_NODE_TYPE_REGISTER;
}

}  // namespace

NodeMap::NodeMap(GRef<ArvDevice> device, std::string owner)
    : device_(std::move(device)), owner_(std::move(owner)) {}

std::shared_ptr<NodeMap> NodeMap::Build(GRef<ArvDevice> device, std::string owner) {
  std::shared_ptr<NodeMap> map(new NodeMap(std::move(device), std::move(owner)));
  ArvGc* genicam = arv_device_get_genicam(map->device_.get());
  if (genicam == nullptr) {
    Fail(OXEL_RETURN_CODE_ERROR,
         std::string(CurrentFunction()) + ": " + map->owner_ + " has no GenICam description");
  }
  if (ArvGcNode* root = arv_gc_get_node(genicam, "Root")) map->Add(root);
  HandleRegistry& handles = Library::Instance().handles;
  handles.Add(map.get(), Kind::NodeMap, map, map.get());
  for (const auto& node : map->nodes_) handles.Add(node.get(), Kind::Node, map, node.get());
  map->registered_ = true;
  return map;
}

NodeMap::~NodeMap() {
  Unregister();
}

void NodeMap::Add(ArvGcNode* node) {
  if (!ARV_IS_GC_FEATURE_NODE(node)) return;
  auto* feature = ARV_GC_FEATURE_NODE(node);
  const char* name = arv_gc_feature_node_get_name(feature);
  if (name == nullptr || byName_.count(name) != 0) return;
  auto made = std::make_unique<Node>();
  Node* added = made.get();
  added->name = name;
  const char* display = arv_gc_feature_node_get_display_name(feature);
  added->displayName = display != nullptr ? display : name;
  added->type = TypeOf(node);
  added->feature = feature;
  added->map = this;
  byName_[added->name] = added;
  nodes_.push_back(std::move(made));

  ArvGc* genicam = arv_gc_node_get_genicam(node);
  if (added->type == OXEL_NODE_TYPE_CATEGORY) {
    for (const GSList* item = arv_gc_category_get_features(ARV_GC_CATEGORY(node)); item != nullptr;
         item = item->next) {
      if (ArvGcNode* child = arv_gc_get_node(genicam, static_cast<const char*>(item->data))) {
        Add(child);
      }
    }
  } else if (added->type == OXEL_NODE_TYPE_ENUMERATION) {
    for (const GSList* item = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(node));
         item != nullptr; item = item->next) {
      auto* entryFeature = ARV_GC_FEATURE_NODE(item->data);
      auto entry = std::make_unique<Node>();
      const char* symbolic = arv_gc_feature_node_get_name(entryFeature);
      entry->displayName = symbolic != nullptr ? symbolic : "";
      entry->name = "EnumEntry_" + added->name + "_" + entry->displayName;
      entry->type = OXEL_NODE_TYPE_ENUMERATION_ENTRY;
      entry->feature = entryFeature;
      entry->enumeration = added;
      entry->map = this;
      added->entries.push_back(entry.get());
      byName_[entry->name] = entry.get();
      nodes_.push_back(std::move(entry));
    }
  }
}

Node* NodeMap::At(size_t index) const {
  if (index >= nodes_.size()) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node index " +
                                            std::to_string(index) + " but the map of " + owner_ +
                                            " has " + std::to_string(nodes_.size()) + " nodes");
  }
  return nodes_[index].get();
}

Node* NodeMap::Find(const std::string& name) const {
  auto found = byName_.find(name);
  if (found == byName_.end()) {
    Fail(OXEL_RETURN_CODE_NOT_FOUND,
         std::string(CurrentFunction()) + ": " + owner_ + " has no feature '" + name + "'");
  }
  return found->second;
}

void NodeMap::Unregister() {
  if (!registered_) return;
  registered_ = false;
  HandleRegistry& handles = Library::Instance().handles;
  for (const auto& node : nodes_) handles.Remove(node.get());
  handles.Remove(this);
}

}  // namespace oxelarv
