// Modules, node maps, and what every node has: name, kind, access status,
// change callbacks and the casts to its kind.
#include "api/exported.h"
#include "api/node_lookup.h"
#include "core/module.h"
#include "transport/node_map.h"

using namespace oxelsim;

namespace {

Ref<NodeMap> FindMap(OXEL_NODE_MAP nodeMap) {
  return Find<NodeMap>(nodeMap, Kind::NodeMap, "nodeMap");
}

template <class Handle>
OXEL_RETURN_CODE Cast(const char* function, OXEL_NODE node, OXEL_NODE_TYPE type, Handle* result) {
  return RunApiCall(function, [&] {
    Ref<Node> found = FindNode(node, "node");
    Handle& out = Out(result, "result");
    if (found->Type() != type) {
      Fail(OXEL_RETURN_CODE_INVALID_CAST, std::string(function) + ": node '" + found->Name() +
                                              "' is a " + NodeTypeName(found->Type()) +
                                              " node, not a " + NodeTypeName(type) + " node");
    }
    out = reinterpret_cast<Handle>(node);
  });
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

OXEL_RETURN_CODE OXEL_Node_RegisterChangedCallback(OXEL_NODE node,
                                                   OXEL_NodeChangedCallback callback, void* context,
                                                   OXEL_CALLBACK_HANDLE* callbackHandle) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    OXEL_CALLBACK_HANDLE& result = Out(callbackHandle, "callbackHandle");
    result = found->Callbacks().Add(callback, context);
  });
}

OXEL_RETURN_CODE OXEL_Node_UnregisterChangedCallback(OXEL_NODE node,
                                                     OXEL_CALLBACK_HANDLE callbackHandle) {
  return RunApiCall(__func__, [&] { FindNode(node, "node")->Callbacks().Remove(callbackHandle); });
}

OXEL_RETURN_CODE OXEL_Node_ToIntegerNode(OXEL_NODE node, OXEL_INTEGER_NODE* integerNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_INTEGER, integerNode);
}

OXEL_RETURN_CODE OXEL_Node_ToBooleanNode(OXEL_NODE node, OXEL_BOOLEAN_NODE* booleanNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_BOOLEAN, booleanNode);
}

OXEL_RETURN_CODE OXEL_Node_ToCommandNode(OXEL_NODE node, OXEL_COMMAND_NODE* commandNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_COMMAND, commandNode);
}

OXEL_RETURN_CODE OXEL_Node_ToFloatNode(OXEL_NODE node, OXEL_FLOAT_NODE* floatNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_FLOAT, floatNode);
}

OXEL_RETURN_CODE OXEL_Node_ToStringNode(OXEL_NODE node, OXEL_STRING_NODE* stringNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_STRING, stringNode);
}

OXEL_RETURN_CODE OXEL_Node_ToRegisterNode(OXEL_NODE node, OXEL_REGISTER_NODE* registerNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_REGISTER, registerNode);
}

OXEL_RETURN_CODE OXEL_Node_ToCategoryNode(OXEL_NODE node, OXEL_CATEGORY_NODE* categoryNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_CATEGORY, categoryNode);
}

OXEL_RETURN_CODE OXEL_Node_ToEnumerationNode(OXEL_NODE node,
                                             OXEL_ENUMERATION_NODE* enumerationNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_ENUMERATION, enumerationNode);
}

OXEL_RETURN_CODE OXEL_Node_ToEnumerationEntryNode(OXEL_NODE node,
                                                  OXEL_ENUMERATION_ENTRY_NODE* entryNode) {
  return Cast(__func__, node, OXEL_NODE_TYPE_ENUMERATION_ENTRY, entryNode);
}
