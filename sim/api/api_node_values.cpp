// The typed node calls: values, ranges, commands and enumeration entries.
#include "api/exported.h"
#include "api/node_lookup.h"

using namespace oxelsim;

namespace {

// What a read needs of the node: its value (readable), or only a property
// such as a range (available).
enum class ReadOf { Value, Property };

void CheckCachePolicy(OXEL_NODE_CACHE_POLICY policy) {
  if (policy != OXEL_NODE_CACHE_POLICY_USE_CACHE && policy != OXEL_NODE_CACHE_POLICY_BYPASS) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": cache policy " + std::to_string(policy) + " (0 or 1)");
  }
}

void CheckAvailable(const CameraFeatures& features, size_t feature) {
  const OXEL_NODE_ACCESS_STATUS access = features.Access(feature);
  if (access == OXEL_NODE_ACCESS_STATUS_NOT_AVAILABLE ||
      access == OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED) {
    Fail(OXEL_RETURN_CODE_BAD_ACCESS, features.Definition(feature).name + " is " +
                                          AccessName(access) + " (" + features.Owner() + ")");
  }
}

// Reads one value of a node of kind `type` into `out`.
template <class T, class Handle, class Read>
OXEL_RETURN_CODE ReadNode(const char* function, Handle handle, OXEL_NODE_TYPE type, T* out,
                          const char* name, ReadOf what, Read read) {
  return RunApiCall(function, [&] {
    Ref<Node> node = FindNodeOfType(handle, type);
    T& result = Out(out, name);
    const size_t feature = node->Feature();
    result = node->Read<T>([&](CameraFeatures& features) {
      if (what == ReadOf::Value) {
        features.CheckReadable(feature);
      } else {
        CheckAvailable(features, feature);
      }
      return static_cast<T>(read(features, feature, features.Current(feature)));
    });
  });
}

template <class T, class Handle, class Read>
OXEL_RETURN_CODE ReadValue(const char* function, Handle handle, OXEL_NODE_TYPE type,
                           OXEL_NODE_CACHE_POLICY policy, T* out, Read read) {
  return ReadNode(function, handle, type, out, "value", ReadOf::Value,
                  [&](CameraFeatures& features, size_t feature, const FeatureSlot& slot) {
                    CheckCachePolicy(policy);
                    return read(features, feature, slot);
                  });
}

template <class Handle, class Write>
OXEL_RETURN_CODE WriteNode(const char* function, Handle handle, OXEL_NODE_TYPE type, Write write) {
  return RunApiCall(function, [&] {
    Ref<Node> node = FindNodeOfType(handle, type);
    const size_t feature = node->Feature();
    node->Write([&](CameraFeatures& features) { write(features, feature); });
  });
}

// The entry node of the enumeration whose symbolic value is `symbolic`.
OXEL_ENUMERATION_ENTRY_NODE EntryHandle(Node& enumeration, const std::string& symbolic) {
  const FeatureDefinition definition = enumeration.Read<FeatureDefinition>(
      [&](CameraFeatures& features) { return features.Definition(enumeration.Feature()); });
  for (size_t i = 0; i < definition.entries.size(); ++i) {
    if (definition.entries[i].symbolic == symbolic) {
      return reinterpret_cast<OXEL_ENUMERATION_ENTRY_NODE>(enumeration.Entries()[i]);
    }
  }
  Fail(OXEL_RETURN_CODE_ERROR, std::string(CurrentFunction()) + ": enumeration '" +
                                   enumeration.Name() + "' has no entry '" + symbolic + "'");
}

}  // namespace

OXEL_RETURN_CODE OXEL_IntegerNode_GetValue(OXEL_INTEGER_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, int64_t* value) {
  return ReadValue(__func__, node, OXEL_NODE_TYPE_INTEGER, cachePolicy, value,
                   [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.intValue; });
}

OXEL_RETURN_CODE OXEL_IntegerNode_SetValue(OXEL_INTEGER_NODE node, int64_t value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_INTEGER,
                   [&](CameraFeatures& features, size_t f) { features.SetInteger(f, value); });
}

OXEL_RETURN_CODE OXEL_IntegerNode_GetMinimum(OXEL_INTEGER_NODE node, int64_t* minimum) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_INTEGER, minimum, "minimum", ReadOf::Property,
                  [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.intMin; });
}

OXEL_RETURN_CODE OXEL_IntegerNode_GetMaximum(OXEL_INTEGER_NODE node, int64_t* maximum) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_INTEGER, maximum, "maximum", ReadOf::Property,
                  [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.intMax; });
}

OXEL_RETURN_CODE OXEL_IntegerNode_GetIncrement(OXEL_INTEGER_NODE node, int64_t* increment) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_INTEGER, increment, "increment", ReadOf::Property,
                  [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.intInc; });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetValue(OXEL_FLOAT_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                         double* value) {
  return ReadValue(
      __func__, node, OXEL_NODE_TYPE_FLOAT, cachePolicy, value,
      [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.floatValue; });
}

OXEL_RETURN_CODE OXEL_FloatNode_SetValue(OXEL_FLOAT_NODE node, double value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_FLOAT,
                   [&](CameraFeatures& features, size_t f) { features.SetFloat(f, value); });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetMinimum(OXEL_FLOAT_NODE node, double* minimum) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_FLOAT, minimum, "minimum", ReadOf::Property,
                  [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.floatMin; });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetMaximum(OXEL_FLOAT_NODE node, double* maximum) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_FLOAT, maximum, "maximum", ReadOf::Property,
                  [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.floatMax; });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetHasConstantIncrement(OXEL_FLOAT_NODE node,
                                                        OXEL_BOOL8* hasConstantIncrement) {
  return ReadNode(
      __func__, node, OXEL_NODE_TYPE_FLOAT, hasConstantIncrement, "hasConstantIncrement",
      ReadOf::Property,
      [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.floatInc > 0.0; });
}

OXEL_RETURN_CODE OXEL_FloatNode_GetIncrement(OXEL_FLOAT_NODE node, double* increment) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_FLOAT, increment, "increment", ReadOf::Property,
                  [](CameraFeatures& features, size_t feature, const FeatureSlot& slot) {
                    if (slot.floatInc <= 0.0) {
                      Fail(OXEL_RETURN_CODE_NOT_AVAILABLE, std::string(CurrentFunction()) + ": " +
                                                               features.Definition(feature).name +
                                                               " has no constant increment (" +
                                                               features.Owner() + ")");
                    }
                    return slot.floatInc;
                  });
}

OXEL_RETURN_CODE OXEL_BooleanNode_GetValue(OXEL_BOOLEAN_NODE node,
                                           OXEL_NODE_CACHE_POLICY cachePolicy, OXEL_BOOL8* value) {
  return ReadValue(
      __func__, node, OXEL_NODE_TYPE_BOOLEAN, cachePolicy, value,
      [](CameraFeatures&, size_t, const FeatureSlot& slot) { return slot.intValue != 0; });
}

OXEL_RETURN_CODE OXEL_BooleanNode_SetValue(OXEL_BOOLEAN_NODE node, OXEL_BOOL8 value) {
  return WriteNode(__func__, node, OXEL_NODE_TYPE_BOOLEAN,
                   [&](CameraFeatures& features, size_t f) { features.SetBoolean(f, value != 0); });
}

OXEL_RETURN_CODE OXEL_StringNode_GetValue(OXEL_STRING_NODE node, OXEL_NODE_CACHE_POLICY cachePolicy,
                                          char* value, size_t* valueSize) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_STRING);
    CheckCachePolicy(cachePolicy);
    const std::string text = found->Read<std::string>([&](CameraFeatures& features) {
      features.CheckReadable(found->Feature());
      return features.Current(found->Feature()).text;
    });
    WriteText(text, value, valueSize);
  });
}

OXEL_RETURN_CODE OXEL_StringNode_SetValue(OXEL_STRING_NODE node, const char* value,
                                          size_t valueSize) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_STRING);
    const std::string text = ReadText(value, valueSize, "value");
    found->Write([&](CameraFeatures& features) { features.SetString(found->Feature(), text); });
  });
}

OXEL_RETURN_CODE OXEL_CommandNode_Execute(OXEL_COMMAND_NODE node) {
  return RunApiCall(__func__, [&] { FindNodeOfType(node, OXEL_NODE_TYPE_COMMAND)->Execute(); });
}

// Commands complete before Execute returns.
OXEL_RETURN_CODE OXEL_CommandNode_GetIsDone(OXEL_COMMAND_NODE node, OXEL_BOOL8* isDone) {
  return RunApiCall(__func__, [&] {
    FindNodeOfType(node, OXEL_NODE_TYPE_COMMAND);
    Out(isDone, "isDone") = 1;
  });
}

OXEL_RETURN_CODE OXEL_RegisterNode_GetLength(OXEL_REGISTER_NODE node, int64_t* length) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_REGISTER, length, "length", ReadOf::Property,
                  [](CameraFeatures& features, size_t feature, const FeatureSlot&) {
                    return features.Definition(feature).registerLength;
                  });
}

OXEL_RETURN_CODE OXEL_CategoryNode_GetNumFeatures(OXEL_CATEGORY_NODE node, size_t* count) {
  return ReadNode(__func__, node, OXEL_NODE_TYPE_CATEGORY, count, "count", ReadOf::Property,
                  [](CameraFeatures& features, size_t feature, const FeatureSlot&) {
                    return features.Definition(feature).children.size();
                  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_GetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      OXEL_NODE_CACHE_POLICY cachePolicy,
                                                      OXEL_ENUMERATION_ENTRY_NODE* entry) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    OXEL_ENUMERATION_ENTRY_NODE& result = Out(entry, "entry");
    CheckCachePolicy(cachePolicy);
    const std::string current = found->Read<std::string>([&](CameraFeatures& features) {
      features.CheckReadable(found->Feature());
      return features.Current(found->Feature()).text;
    });
    result = EntryHandle(*found, current);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_SetCurrentEntry(OXEL_ENUMERATION_NODE node,
                                                      const char* symbolicValue,
                                                      size_t symbolicValueSize) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    const std::string symbolic = ReadText(symbolicValue, symbolicValueSize, "symbolicValue");
    found->Write(
        [&](CameraFeatures& features) { features.SetEnumeration(found->Feature(), symbolic); });
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_GetNumEntries(OXEL_ENUMERATION_NODE node, size_t* count) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    Out(count, "count") = found->Entries().size();
  });
}

OXEL_RETURN_CODE OXEL_EnumerationNode_GetEntry(OXEL_ENUMERATION_NODE node, size_t index,
                                               OXEL_ENUMERATION_ENTRY_NODE* entry) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(node, OXEL_NODE_TYPE_ENUMERATION);
    OXEL_ENUMERATION_ENTRY_NODE& result = Out(entry, "entry");
    if (index >= found->Entries().size()) {
      Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
           std::string(__func__) + ": entry index " + std::to_string(index) + " of '" +
               found->Name() + "', which has " + std::to_string(found->Entries().size()));
    }
    result = reinterpret_cast<OXEL_ENUMERATION_ENTRY_NODE>(found->Entries()[index]);
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
    WriteText(found->DisplayName(), symbolicValue, symbolicValueSize);
  });
}

OXEL_RETURN_CODE OXEL_EnumerationEntryNode_GetValue(OXEL_ENUMERATION_ENTRY_NODE entry,
                                                    int64_t* value) {
  return RunApiCall(__func__, [&] {
    Ref<Node> found = FindNodeOfType(entry, OXEL_NODE_TYPE_ENUMERATION_ENTRY);
    int64_t& result = Out(value, "value");
    result = found->Read<int64_t>([&](CameraFeatures&) { return found->EntryDefinition().value; });
  });
}
