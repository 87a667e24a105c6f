// Change callbacks of nodes and the casts of a node to its kind: the exported
// functions every Oxel library shares, over the nodes of the one being built
// (api/exported.h of that library).
#include "api/exported.h"

using namespace oxellib;

namespace {

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
