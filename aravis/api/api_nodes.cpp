// Modules, node maps and nodes: names, kinds, access, values, ranges,
// commands and enumeration entries, over Aravis's GenICam node map. Reads
// and writes check access and range here, with the codes every Oxel library
// gives, before Aravis is asked (whose own checks are on as well).
#include <cmath>
#include <cstring>

#include "api/exported.h"
#include "core/gerror.h"

using namespace oxelarv;

namespace {

Ref<Node> FindNodeOfType(const void* handle, OXEL_NODE_TYPE type) {
  Ref<Node> node = FindNode(handle, "node");
  if (node->type != type) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE, std::string(CurrentFunction()) + ": node '" + node->name +
                                              "' is a " + NodeTypeName(node->type) +
                                              " node, not a " + NodeTypeName(type) + " node");
  }
  return node;
}

OXEL_NODE_ACCESS_STATUS AccessOf(const Node& node) {
  GError* error = nullptr;
  ArvGcFeatureNode* feature = node.feature;
  const bool implemented = arv_gc_feature_node_is_implemented(feature, &error);
  g_clear_error(&error);
  if (!implemented) return OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED;
  const bool available = arv_gc_feature_node_is_available(feature, &error);
  g_clear_error(&error);
  if (!available) return OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE;
  if (node.type == OXEL_NODE_TYPE_CATEGORY || node.type == OXEL_NODE_TYPE_ENUMERATION_ENTRY) {
    return OXEL_NODE_ACCESS_STATUS_READ_ONLY;
  }
  const ArvGcAccessMode mode = arv_gc_feature_node_get_actual_access_mode(feature);
  const bool locked = arv_gc_feature_node_is_locked(feature, &error);
  g_clear_error(&error);
  switch (mode) {
    case ARV_GC_ACCESS_MODE_RO:
      return OXEL_NODE_ACCESS_STATUS_READ_ONLY;
    case ARV_GC_ACCESS_MODE_WO:
      return OXEL_NODE_ACCESS_STATUS_WRITE_ONLY;
    default:
      return locked ? OXEL_NODE_ACCESS_STATUS_READ_ONLY : OXEL_NODE_ACCESS_STATUS_READ_WRITE;
  }
}

void CheckCachePolicy(OXEL_NODE_CACHE_POLICY policy) {
  if (policy != OXEL_NODE_CACHE_POLICY_USE_CACHE && policy != OXEL_NODE_CACHE_POLICY_BYPASS) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": cache policy " + std::to_string(policy) + " (0 or 1)");
  }
}

void CheckReadable(const Node& node) {
  const OXEL_NODE_ACCESS_STATUS access = AccessOf(node);
  if (access != OXEL_NODE_ACCESS_STATUS_READ_ONLY && access != OXEL_NODE_ACCESS_STATUS_READ_WRITE) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, node.name + " cannot be read: its access is " +
                                          AccessName(access) + " (" + node.map->Owner() + ")");
  }
}

void CheckAvailable(const Node& node) {
  const OXEL_NODE_ACCESS_STATUS access = AccessOf(node);
  if (access == OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE ||
      access == OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS,
         node.name + " is " + AccessName(access) + " (" + node.map->Owner() + ")");
  }
}

void CheckWritable(const Node& node) {
  const OXEL_NODE_ACCESS_STATUS access = AccessOf(node);
  if (access != OXEL_NODE_ACCESS_STATUS_WRITE_ONLY &&
      access != OXEL_NODE_ACCESS_STATUS_READ_WRITE) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, node.name + " cannot be written: its access is " +
                                          AccessName(access) + " (" + node.map->Owner() + ")");
  }
}

// Fails with the Oxel code of an Aravis error, naming the node.
void Check(GError*& error, const Node& node) {
  if (error == nullptr) return;
  const OXEL_RETURN_CODE code = CodeOfError(error);
  FailOnError(error, code, node.name + " (" + node.map->Owner() + ")");
}

// Runs `work` on the node of kind `type` behind `handle`, under its map's lock.
template <class Work>
OXEL_RETURN_CODE OnNode(const char* function, const void* handle, OXEL_NODE_TYPE type,
                        Work&& work) {
  return RunApiCall(function, [&] {
    Ref<Node> node = FindNodeOfType(handle, type);
    std::lock_guard lock(node->map->Mutex());
    work(*node);
  });
}

void Changed(Node& node) {
  for (const auto& entry : node.changed.Snapshot()) {
    entry->function(reinterpret_cast<OXEL_NODE>(&node), entry->context);
  }
}

// A write by `write`, after the access check; change callbacks follow.
template <class Write>
OXEL_RETURN_CODE WriteNode(const char* function, const void* handle, OXEL_NODE_TYPE type,
                           Write&& write) {
  Node* written = nullptr;
  const OXEL_RETURN_CODE result = OnNode(function, handle, type, [&](Node& node) {
    CheckWritable(node);
    write(node);
    written = &node;
  });
  if (result == OXEL_RETURN_CODE_SUCCESS && written != nullptr) {
    RunApiCall(function, [&] {
      Ref<Node> alive = FindNode(handle, "node");
      Changed(*alive);
    });
  }
  return result;
}

ArvGcInteger* AsInteger(const Node& node) {
  return ARV_GC_INTEGER(node.feature);
}

ArvGcFloat* AsFloat(const Node& node) {
  return ARV_GC_FLOAT(node.feature);
}

std::string NumberText(double value) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10g", value);
  return text;
}

}  // namespace

OXEL_RETURN_CODE OXEL_Module_GetNumNodeMaps(OXEL_MODULE module, size_t* count) {
  return RunApiCall(__func__, [&] {
    Library::Instance().RequireStarted();
    Ref<Module> found = Library::Instance().handles.FindModule<Module>(module, "module");
    Out(count, "count") = found->NodeMapCount();
  });
}

OXEL_RETURN_CODE OXEL_Module_GetNodeMap(OXEL_MODULE module, size_t index, OXEL_NODE_MAP* nodeMap) {
  return RunApiCall(__func__, [&] {
    Library::Instance().RequireStarted();
    Ref<Module> found = Library::Instance().handles.FindModule<Module>(module, "module");
    OXEL_NODE_MAP& result = Out(nodeMap, "nodeMap");
    result = reinterpret_cast<OXEL_NODE_MAP>(found->NodeMapAt(index).get());
  });
}

OXEL_RETURN_CODE OXEL_NodeMap_FindNode(OXEL_NODE_MAP nodeMap, const char* name, size_t nameSize,
                                       OXEL_NODE* node) {
  return RunApiCall(__func__, [&] {
    auto map = Find<NodeMap>(nodeMap, Kind::NodeMap, "nodeMap");
    OXEL_NODE& result = Out(node, "node");
    result = reinterpret_cast<OXEL_NODE>(map->Find(ReadText(name, nameSize, "name")));
  });
}

OXEL_RETURN_CODE OXEL_NodeMap_GetNumNodes(OXEL_NODE_MAP nodeMap, size_t* count) {
  return RunApiCall(__func__, [&] {
    Out(count, "count") = Find<NodeMap>(nodeMap, Kind::NodeMap, "nodeMap")->Count();
  });
}

OXEL_RETURN_CODE OXEL_NodeMap_GetNode(OXEL_NODE_MAP nodeMap, size_t index, OXEL_NODE* node) {
  return RunApiCall(__func__, [&] {
    auto map = Find<NodeMap>(nodeMap, Kind::NodeMap, "nodeMap");
    OXEL_NODE& result = Out(node, "node");
    result = reinterpret_cast<OXEL_NODE>(map->At(index));
  });
}

OXEL_RETURN_CODE OXEL_Node_GetName(OXEL_NODE node, char* name, size_t* nameSize) {
  return RunApiCall(__func__, [&] { WriteText(FindNode(node, "node")->name, name, nameSize); });
}

OXEL_RETURN_CODE OXEL_Node_GetDisplayName(OXEL_NODE node, char* displayName,
                                          size_t* displayNameSize) {
  return RunApiCall(__func__, [&] {
    WriteText(FindNode(node, "node")->displayName, displayName, displayNameSize);
  });
}

OXEL_RETURN_CODE OXEL_Node_GetType(OXEL_NODE node, OXEL_NODE_TYPE* type) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    Out(type, "type") = found->type;
  });
}

OXEL_RETURN_CODE OXEL_Node_GetAccessStatus(OXEL_NODE node, OXEL_NODE_ACCESS_STATUS* accessStatus) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNode(node, "node");
    OXEL_NODE_ACCESS_STATUS& result = Out(accessStatus, "accessStatus");
    std::lock_guard lock(found->map->Mutex());
    result = AccessOf(*found);
  });
}

// ---- integers -------------------------------------------------------------------

OXEL_RETURN_CODE OXEL_IntegerNode_GetValue(OXEL_INTEGER_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, int64_t* value) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_INTEGER, [&](Node& found) {
    int64_t& result = Out(value, "value");
    CheckReadable(found);
    CheckCachePolicy(cachePolicy);
    GError* error = nullptr;
    const gint64 read = arv_gc_integer_get_value(AsInteger(found), &error);
    Check(error, found);
    result = read;
  });
}

OXEL_RETURN_CODE OXEL_IntegerNode_SetValue(OXEL_INTEGER_NODE node, int64_t value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_INTEGER, [&](Node& found) {
    GError* error = nullptr;
    const gint64 minimum = arv_gc_integer_get_min(AsInteger(found), &error);
    Check(error, found);
    const gint64 maximum = arv_gc_integer_get_max(AsInteger(found), &error);
    Check(error, found);
    const gint64 increment = arv_gc_integer_get_inc(AsInteger(found), &error);
    Check(error, found);
    if (value < minimum || value > maximum) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
           found.name + " " + std::to_string(value) + " out of range [" + std::to_string(minimum) +
               ", " + std::to_string(maximum) + "] (" + found.map->Owner() + ")");
    }
    if (increment > 1 && (value - minimum) % increment != 0) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, found.name + " " + std::to_string(value) +
                                              " not on the increment: " + std::to_string(minimum) +
                                              " + k * " + std::to_string(increment) + " (" +
                                              found.map->Owner() + ")");
    }
    arv_gc_integer_set_value(AsInteger(found), value, &error);
    Check(error, found);
  });
}

namespace {

template <class T, class Read>
OXEL_RETURN_CODE NodeProperty(const char* function, const void* handle, OXEL_NODE_TYPE type, T* out,
                              const char* name, Read read) {
  return OnNode(function, handle, type, [&](Node& found) {
    T& result = Out(out, name);
    CheckAvailable(found);
    GError* error = nullptr;
    const T value = static_cast<T>(read(found, &error));
    Check(error, found);
    result = value;
  });
}

}  // namespace

OXEL_RETURN_CODE OXEL_IntegerNode_GetMinimum(OXEL_INTEGER_NODE node, int64_t* minimum) {
  return NodeProperty(__func__, node, OXEL_NODE_TYPE_INTEGER, minimum, "minimum",
                      [](Node& n, GError** e) { return arv_gc_integer_get_min(AsInteger(n), e); });
}

OXEL_RETURN_CODE OXEL_IntegerNode_GetMaximum(OXEL_INTEGER_NODE node, int64_t* maximum) {
  return NodeProperty(__func__, node, OXEL_NODE_TYPE_INTEGER, maximum, "maximum",
                      [](Node& n, GError** e) { return arv_gc_integer_get_max(AsInteger(n), e); });
}

OXEL_RETURN_CODE OXEL_IntegerNode_GetIncrement(OXEL_INTEGER_NODE node, int64_t* increment) {
  return NodeProperty(__func__, node, OXEL_NODE_TYPE_INTEGER, increment, "increment",
                      [](Node& n, GError** e) { return arv_gc_integer_get_inc(AsInteger(n), e); });
}

// ---- floats ---------------------------------------------------------------------

OXEL_RETURN_CODE OXEL_FloatNode_GetValue(OXEL_FLOAT_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                         double* value) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_FLOAT, [&](Node& found) {
    double& result = Out(value, "value");
    CheckReadable(found);
    CheckCachePolicy(cachePolicy);
    GError* error = nullptr;
    const double read = arv_gc_float_get_value(AsFloat(found), &error);
    Check(error, found);
    result = read;
  });
}

OXEL_RETURN_CODE OXEL_FloatNode_SetValue(OXEL_FLOAT_NODE node, double value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_FLOAT, [&](Node& found) {
    GError* error = nullptr;
    const double minimum = arv_gc_float_get_min(AsFloat(found), &error);
    Check(error, found);
    const double maximum = arv_gc_float_get_max(AsFloat(found), &error);
    Check(error, found);
    if (!(value >= minimum && value <= maximum)) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, found.name + " " + NumberText(value) + " out of range [" +
                                              NumberText(minimum) + ", " + NumberText(maximum) +
                                              "] (" + found.map->Owner() + ")");
    }
    arv_gc_float_set_value(AsFloat(found), value, &error);
    Check(error, found);
  });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetMinimum(OXEL_FLOAT_NODE node, double* minimum) {
  return NodeProperty(__func__, node, OXEL_NODE_TYPE_FLOAT, minimum, "minimum",
                      [](Node& n, GError** e) { return arv_gc_float_get_min(AsFloat(n), e); });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetMaximum(OXEL_FLOAT_NODE node, double* maximum) {
  return NodeProperty(__func__, node, OXEL_NODE_TYPE_FLOAT, maximum, "maximum",
                      [](Node& n, GError** e) { return arv_gc_float_get_max(AsFloat(n), e); });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetHasConstantIncrement(OXEL_FLOAT_NODE node,
                                                        OXEL_BOOL8* hasConstantIncrement) {
  return NodeProperty(
      __func__, node, OXEL_NODE_TYPE_FLOAT, hasConstantIncrement, "hasConstantIncrement",
      [](Node& n, GError** e) { return arv_gc_float_get_inc(AsFloat(n), e) > 0.0 ? 1 : 0; });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetIncrement(OXEL_FLOAT_NODE node, double* increment) {
  return NodeProperty(
      __func__, node, OXEL_NODE_TYPE_FLOAT, increment, "increment", [](Node& n, GError** e) {
        const double step = arv_gc_float_get_inc(AsFloat(n), e);
        if (*e == nullptr && !(step > 0.0)) {
          Fail(OXEL_RETURN_CODE_NOT_AVAILABLE, std::string(CurrentFunction()) + ": " + n.name +
                                                   " has no constant increment (" + n.map->Owner() +
                                                   ")");
        }
        return step;
      });
}

// ---- booleans, strings, commands, registers, categories -------------------------

OXEL_RETURN_CODE OXEL_BooleanNode_GetValue(OXEL_BOOLEAN_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, OXEL_BOOL8* value) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_BOOLEAN, [&](Node& found) {
    OXEL_BOOL8& result = Out(value, "value");
    CheckReadable(found);
    CheckCachePolicy(cachePolicy);
    GError* error = nullptr;
    const gboolean read = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(found.feature), &error);
    Check(error, found);
    result = read ? 1 : 0;
  });
}

OXEL_RETURN_CODE OXEL_BooleanNode_SetValue(OXEL_BOOLEAN_NODE node, OXEL_BOOL8 value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_BOOLEAN, [&](Node& found) {
    GError* error = nullptr;
    arv_gc_boolean_set_value(ARV_GC_BOOLEAN(found.feature), value != 0, &error);
    Check(error, found);
  });
}

OXEL_RETURN_CODE OXEL_StringNode_GetValue(OXEL_STRING_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                          char* value, size_t* valueSize) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_STRING, [&](Node& found) {
    CheckReadable(found);
    CheckCachePolicy(cachePolicy);
    GError* error = nullptr;
    const char* read = arv_gc_string_get_value(ARV_GC_STRING(found.feature), &error);
    Check(error, found);
    WriteText(read != nullptr ? read : "", value, valueSize);
  });
}

OXEL_RETURN_CODE OXEL_StringNode_SetValue(OXEL_STRING_NODE node, const char* value,
                                          size_t valueSize) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_STRING, [&](Node& found) {
    const std::string text = ReadText(value, valueSize, "value");
    GError* error = nullptr;
    const gint64 longest = arv_gc_string_get_max_length(ARV_GC_STRING(found.feature), &error);
    Check(error, found);
    if (longest > 0 && static_cast<gint64>(text.size()) > longest) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, found.name + " takes at most " + std::to_string(longest) +
                                              " characters, not " + std::to_string(text.size()) +
                                              " (" + found.map->Owner() + ")");
    }
    arv_gc_string_set_value(ARV_GC_STRING(found.feature), text.c_str(), &error);
    Check(error, found);
  });
}

OXEL_RETURN_CODE OXEL_CommandNode_Execute(OXEL_COMMAND_NODE node) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_COMMAND, [&](Node& found) {
    GError* error = nullptr;
    arv_gc_command_execute(ARV_GC_COMMAND(found.feature), &error);
    Check(error, found);
  });
}

OXEL_RETURN_CODE OXEL_CommandNode_GetIsDone(OXEL_COMMAND_NODE node, OXEL_BOOL8* isDone) {
  // Aravis executes a command when it is written and does not poll it.
  return OnNode(__func__, node, OXEL_NODE_TYPE_COMMAND, [&](Node& found) {
    OXEL_BOOL8& result = Out(isDone, "isDone");
    CheckAvailable(found);
    result = 1;
  });
}

OXEL_RETURN_CODE OXEL_RegisterNode_GetLength(OXEL_REGISTER_NODE node, int64_t* length) {
  return NodeProperty(
      __func__, node, OXEL_NODE_TYPE_REGISTER, length, "length", [](Node& n, GError** e) {
        return static_cast<int64_t>(arv_gc_register_get_length(ARV_GC_REGISTER(n.feature), e));
      });
}

OXEL_RETURN_CODE OXEL_CategoryNode_GetNumFeatures(OXEL_CATEGORY_NODE node, size_t* count) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_CATEGORY, [&](Node& found) {
    Out(count, "count") = g_slist_length(
        const_cast<GSList*>(arv_gc_category_get_features(ARV_GC_CATEGORY(found.feature))));
  });
}

// ---- enumerations -----------------------------------------------------------------

OXEL_RETURN_CODE OXEL_EnumerationNode_GetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      OXEL_NODE_CACHE_POLICY cachePolicy,
                                                      OXEL_ENUMERATION_ENTRY_NODE* entry) {
  return OnNode(__func__, node, OXEL_NODE_TYPE_ENUMERATION, [&](Node& found) {
    OXEL_ENUMERATION_ENTRY_NODE& result = Out(entry, "entry");
    CheckReadable(found);
    CheckCachePolicy(cachePolicy);
    GError* error = nullptr;
    const char* current =
        arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(found.feature), &error);
    Check(error, found);
    for (Node* candidate : found.entries) {
      if (current != nullptr && candidate->displayName == current) {
        result = reinterpret_cast<OXEL_ENUMERATION_ENTRY_NODE>(candidate);
        return;
      }
    }
    Fail(OXEL_RETURN_CODE_ERROR, std::string(CurrentFunction()) + ": enumeration '" + found.name +
                                     "' has no entry for its current value (" + found.map->Owner() +
                                     ")");
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_SetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      const char* symbolicValue,
                                                      size_t symbolicValueSize) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_ENUMERATION, [&](Node& found) {
    const std::string symbolic = ReadText(symbolicValue, symbolicValueSize, "symbolicValue");
    Node* target = nullptr;
    for (Node* candidate : found.entries) {
      if (candidate->displayName == symbolic) target = candidate;
    }
    if (target == nullptr) {
      Fail(OXEL_RETURN_CODE_NOT_FOUND,
           found.name + " has no entry '" + symbolic + "' (" + found.map->Owner() + ")");
    }
    if (AccessOf(*target) != OXEL_NODE_ACCESS_STATUS_READ_ONLY) {
      Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
           found.name + " entry '" + symbolic + "' is not available (" + found.map->Owner() + ")");
    }
    GError* error = nullptr;
    arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(found.feature), symbolic.c_str(),
                                        &error);
    Check(error, found);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_GetNumEntries(OXEL_ENUMERATION_NODE node, size_t* count) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    Out(count, "count") = found->entries.size();
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_GetEntry(OXEL_ENUMERATION_NODE node, size_t index,
                                               OXEL_ENUMERATION_ENTRY_NODE* entry) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    OXEL_ENUMERATION_ENTRY_NODE& result = Out(entry, "entry");
    if (index >= found->entries.size()) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
           std::string(__func__) + ": entry index " + std::to_string(index) + " of '" +
               found->name + "', which has " + std::to_string(found->entries.size()));
    }
    result = reinterpret_cast<OXEL_ENUMERATION_ENTRY_NODE>(found->entries[index]);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationEntryNode_ToNode(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                  OXEL_NODE* node) {
  return RunApiCall(__func__, [&] {
    FindNodeOfType(entry, OXEL_NODE_TYPE_ENUMERATION_ENTRY);
    Out(node, "node") = reinterpret_cast<OXEL_NODE>(entry);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationEntryNode_GetSymbolicValue(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                            char* symbolicValue,
                                                            size_t* symbolicValueSize) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(entry, OXEL_NODE_TYPE_ENUMERATION_ENTRY);
    WriteText(found->displayName, symbolicValue, symbolicValueSize);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationEntryNode_GetValue(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                    int64_t* value) {
  return OnNode(__func__, entry, OXEL_NODE_TYPE_ENUMERATION_ENTRY, [&](Node& found) {
    int64_t& result = Out(value, "value");
    GError* error = nullptr;
    const gint64 read = arv_gc_enum_entry_get_value(ARV_GC_ENUM_ENTRY(found.feature), &error);
    Check(error, found);
    result = read;
  });
}
