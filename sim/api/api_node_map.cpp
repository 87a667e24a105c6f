// Modules, node maps, and what every node has: name, kind and access status.
#include "api/exported.h"
#include "api/node_lookup.h"
#include "core/module.h"
#include "transport/node_map.h"

using namespace oxelsim;

namespace {

Ref<NodeMap> FindMap(OXEL_NODE_MAP nodeMap) {
  return Find<NodeMap>(nodeMap, Kind::NodeMap, "nodeMap");
}

}  // namespace

OXEL_RETURN_CODE OXEL_Module_GetNumNodeMaps(OXEL_MODULE module, size_t* count) {
  return RunApiCall(__func__, [&] {
    Simulator::Instance().RequireStarted();
    Ref<Module> found = Simulator::Instance().handles.FindModule<Module>(module, "module");
    Out(count, "count") = found->NodeMapCount();
  });
}

OXEL_RETURN_CODE OXEL_Module_GetNodeMap(OXEL_MODULE module, size_t index, OXEL_NODE_MAP* nodeMap) {
  return RunApiCall(__func__, [&] {
    Simulator::Instance().RequireStarted();
    Ref<Module> found = Simulator::Instance().handles.FindModule<Module>(module, "module");
    OXEL_NODE_MAP& result = Out(nodeMap, "nodeMap");
    result = reinterpret_cast<OXEL_NODE_MAP>(found->NodeMapAt(index).get());
  });
}

OXEL_RETURN_CODE OXEL_NodeMap_FindNode(OXEL_NODE_MAP nodeMap, const char* name, size_t nameSize,
                                       OXEL_NODE* node) {
  return RunApiCall(__func__, [&] {
    Ref<NodeMap> map = FindMap(nodeMap);
    OXEL_NODE& result = Out(node, "node");
    result = reinterpret_cast<OXEL_NODE>(&map->Find(ReadText(name, nameSize, "name")));
  });
}

OXEL_RETURN_CODE OXEL_NodeMap_GetNumNodes(OXEL_NODE_MAP nodeMap, size_t* count) {
  return RunApiCall(__func__, [&] { Out(count, "count") = FindMap(nodeMap)->Count(); });
}

OXEL_RETURN_CODE OXEL_NodeMap_GetNode(OXEL_NODE_MAP nodeMap, size_t index, OXEL_NODE* node) {
  return RunApiCall(__func__, [&] {
    Ref<NodeMap> map = FindMap(nodeMap);
    OXEL_NODE& result = Out(node, "node");
    result = reinterpret_cast<OXEL_NODE>(&map->At(index));
  });
}

OXEL_RETURN_CODE OXEL_Node_GetName(OXEL_NODE node, char* name, size_t* nameSize) {
  return RunApiCall(__func__, [&] { WriteText(FindNode(node, "node")->Name(), name, nameSize); });
}

OXEL_RETURN_CODE OXEL_Node_GetDisplayName(OXEL_NODE node, char* displayName,
                                          size_t* displayNameSize) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    WriteText(found->DisplayName(), displayName, displayNameSize);
  });
}

OXEL_RETURN_CODE OXEL_Node_GetType(OXEL_NODE node, OXEL_NODE_TYPE* type) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    Out(type, "type") = found->Type();
  });
}

OXEL_RETURN_CODE OXEL_Node_GetAccessStatus(OXEL_NODE node, OXEL_NODE_ACCESS_STATUS* accessStatus) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    OXEL_NODE_ACCESS_STATUS& result = Out(accessStatus, "accessStatus");
    result = found->Access();
  });
}
