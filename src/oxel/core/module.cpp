#include "oxel/core/module.h"

#include "oxel/core/checked_call.h"
#include "oxel/core/class_creator.h"
#include "oxel/core/node_map.h"
#include "oxel/core/oxel_functions.h"

namespace oxel::core {

std::vector<std::shared_ptr<NodeMap>> Module::NodeMaps() {
  EnsureInitialized();
  return nodeMaps_;
}

void Module::InitializeOnce() {
  const OXEL_MODULE module = ModuleHandle();
  const auto count = QueryValue<size_t>(
      [&](size_t* out) { return Api().OXEL_Module_GetNumNodeMaps(module, out); });
  std::vector<std::shared_ptr<NodeMap>> nodeMaps;
  nodeMaps.reserve(count);
  for (size_t index = 0; index < count; ++index) {
    const auto handle = QueryValue<OXEL_NODE_MAP>(
        [&](OXEL_NODE_MAP* out) { return Api().OXEL_Module_GetNodeMap(module, index, out); });
    nodeMaps.push_back(ClassCreator<NodeMap>::Create(handle));
  }
  nodeMaps_ = std::move(nodeMaps);
}

}  // namespace oxel::core
