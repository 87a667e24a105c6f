#include "camera/feature_changes.h"

#include "camera/camera_features.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace oxelsim {

namespace {

OXEL_NODE_TYPE ParseType(const JsonReader& reader) {
  const std::string name = reader.Choice(
      {"Integer", "Float", "Boolean", "String", "Enumeration", "Command", "Register", "Category"});
  for (OXEL_NODE_TYPE type = OXEL_NODE_TYPE_INTEGER; type <= OXEL_NODE_TYPE_ENUMERATION; ++type) {
    if (name == NodeTypeName(type)) return type;
  }
  reader.Fail("a node kind");
}

OXEL_NODE_ACCESS_STATUS ParseAccess(const JsonReader& reader) {
  const std::string name =
      reader.Choice({"ReadWrite", "ReadOnly", "WriteOnly", "NotAvailable", "NotImplemented"});
  for (OXEL_NODE_ACCESS_STATUS access = OXEL_NODE_ACCESS_STATUS_NOT_IMPLEMENTED;
       access <= OXEL_NODE_ACCESS_STATUS_READ_WRITE; ++access) {
    if (name == AccessName(access)) return access;
  }
  reader.Fail("an access status");
}

// Changes one slot: min, max, inc and value as the feature's kind has them.
void ChangeSlot(const FeatureDefinition& definition, FeatureSlot& slot, const JsonReader& change) {
  auto part = [&](const char* key, unsigned computed) -> std::optional<JsonReader> {
    std::optional<JsonReader> member = change.Optional(key);
    if (member && (definition.computed & computed) != 0) {
      member->Fail(std::string("no \"") + key + "\": the camera computes the " + key + " of " +
                   definition.name);
    }
    return member;
  };
  switch (definition.type) {
    case OXEL_NODE_TYPE_INTEGER:
      if (auto min = part("min", kComputedMinimum)) slot.intMin = min->Integer();
      if (auto max = part("max", kComputedMaximum)) slot.intMax = max->Integer();
      if (auto inc = part("inc", kComputedMinimum)) slot.intInc = inc->Positive();
      if (auto value = part("value", kComputedValue)) slot.intValue = value->Integer();
      break;
    case OXEL_NODE_TYPE_FLOAT:
      if (auto min = part("min", kComputedMinimum)) slot.floatMin = min->Number();
      if (auto max = part("max", kComputedMaximum)) slot.floatMax = max->Number();
      if (auto inc = part("inc", kComputedMinimum)) {
        slot.floatInc = inc->Number();
        if (slot.floatInc < 0.0) inc->Fail("an increment of 0 (none) or more");
      }
      if (auto value = part("value", kComputedValue)) slot.floatValue = value->Number();
      break;
    case OXEL_NODE_TYPE_BOOLEAN:
      if (auto value = part("value", kComputedValue)) slot.intValue = value->Boolean() ? 1 : 0;
      break;
    case OXEL_NODE_TYPE_STRING:
    case OXEL_NODE_TYPE_ENUMERATION:
      if (auto value = part("value", kComputedValue)) slot.text = value->String();
      break;
    default:
      break;
  }
}

std::vector<EnumEntryDefinition> ParseEntries(const JsonReader& reader) {
  std::vector<EnumEntryDefinition> entries;
  for (const JsonReader& item : reader.Array()) {
    EnumEntryDefinition entry;
    entry.value = static_cast<int64_t>(entries.size());
    if (item.IsString()) {
      entry.symbolic = item.NonEmptyString();
    } else {
      item.AllowOnly({"name", "available", "value"});
      entry.symbolic = item.Member("name").NonEmptyString();
      if (auto available = item.Optional("available")) entry.available = available->Boolean();
      if (auto value = item.Optional("value")) entry.value = value->Integer();
    }
    for (const EnumEntryDefinition& other : entries) {
      if (other.symbolic == entry.symbolic) item.Fail("entry names that differ");
    }
    entries.push_back(entry);
  }
  if (entries.empty()) reader.Fail("at least one entry");
  return entries;
}

void AllowKeysFor(const FeatureDefinition& definition, const JsonReader& change) {
  switch (definition.type) {
    case OXEL_NODE_TYPE_INTEGER:
      return change.AllowOnly({"type", "access", "min", "max", "inc", "value", "perSelector"});
    case OXEL_NODE_TYPE_FLOAT:
      return change.AllowOnly(
          {"type", "access", "min", "max", "inc", "value", "unit", "perSelector"});
    case OXEL_NODE_TYPE_ENUMERATION:
      return change.AllowOnly({"type", "access", "entries", "value", "perSelector"});
    case OXEL_NODE_TYPE_BOOLEAN:
    case OXEL_NODE_TYPE_STRING:
      return change.AllowOnly({"type", "access", "value", "perSelector"});
    case OXEL_NODE_TYPE_REGISTER:
      return change.AllowOnly({"type", "access", "length"});
    default:
      return change.AllowOnly({"type", "access"});
  }
}

void ChangeFeature(FeatureDefinition& definition, const JsonReader& change) {
  AllowKeysFor(definition, change);
  if (auto type = change.Optional("type")) {
    if (ParseType(*type) != definition.type) {
      type->Fail(std::string("\"") + NodeTypeName(definition.type) + "\", the kind of " +
                 definition.name);
    }
  }
  if (auto access = change.Optional("access")) definition.access = ParseAccess(*access);
  if (auto entries = change.Optional("entries")) {
    if (definition.name == "PixelFormat") {
      entries->Fail("no \"entries\" for PixelFormat: list the formats in \"pixelFormats\"");
    }
    definition.entries = ParseEntries(*entries);
    const bool keepsCurrent =
        definition.FindEntry(definition.slots.begin()->second.text) != nullptr;
    if (!keepsCurrent) {
      for (auto& [key, slot] : definition.slots) slot.text = definition.entries.front().symbolic;
    }
  }
  if (auto unit = change.Optional("unit")) definition.unit = unit->String();
  if (auto length = change.Optional("length")) definition.registerLength = length->Positive();
  for (auto& [key, slot] : definition.slots) ChangeSlot(definition, slot, change);
}

FeatureDefinition NewFeature(const std::string& name, const JsonReader& change) {
  if (!change.IsObject() || !change.Optional("type")) {
    change.Refuse("'" + name +
                  "' is not a feature of this camera; check the name, or give the \"type\" of "
                  "a feature of its own");
  }
  FeatureDefinition definition;
  definition.name = name;
  definition.type = ParseType(change.Member("type"));
  if (definition.type == OXEL_NODE_TYPE_ENUMERATION_ENTRY ||
      definition.type == OXEL_NODE_TYPE_CATEGORY) {
    change.Member("type").Fail("a feature kind other than Category");
  }
  FeatureSlot& slot = definition.slots[""];
  slot.intMax = definition.type == OXEL_NODE_TYPE_BOOLEAN ? 1 : 100;
  slot.floatMax = 100.0;
  if (definition.type == OXEL_NODE_TYPE_COMMAND)
    definition.access = OXEL_NODE_ACCESS_STATUS_WRITE_ONLY;
  if (definition.type == OXEL_NODE_TYPE_REGISTER) definition.registerLength = 4;
  if (definition.type == OXEL_NODE_TYPE_ENUMERATION) {
    definition.entries = ParseEntries(change.Member("entries"));
    slot.text = definition.entries.front().symbolic;
  }
  if (change.Optional("perSelector")) {
    change.Member("perSelector").Fail("no \"perSelector\": features of a file have no selector");
  }
  ChangeFeature(definition, change);
  return definition;
}

void RemoveFeature(std::vector<FeatureDefinition>& features, const std::string& name) {
  std::erase_if(features,
                [&](const FeatureDefinition& definition) { return definition.name == name; });
  for (FeatureDefinition& definition : features) std::erase(definition.children, name);
}

FeatureDefinition* Find(std::vector<FeatureDefinition>& features, const std::string& name) {
  for (FeatureDefinition& definition : features) {
    if (definition.name == name) return &definition;
  }
  return nullptr;
}

// Gives every selected feature one slot per entry of its selector.
void ExpandSelected(std::vector<FeatureDefinition>& features) {
  for (FeatureDefinition& definition : features) {
    if (definition.selector.empty()) continue;
    const FeatureDefinition* selector = Find(features, definition.selector);
    const FeatureSlot common = definition.slots.begin()->second;
    definition.slots.clear();
    if (selector == nullptr || selector->type != OXEL_NODE_TYPE_ENUMERATION) {
      definition.selector.clear();
      definition.slots[""] = common;
      continue;
    }
    for (const EnumEntryDefinition& entry : selector->entries)
      definition.slots[entry.symbolic] = common;
  }
}

void ChangePerSelector(FeatureDefinition& definition, const JsonReader& perSelector) {
  if (definition.selector.empty()) {
    perSelector.Fail("no \"perSelector\": " + definition.name + " has no selector on this camera");
  }
  for (const std::string& key : perSelector.Keys()) {
    auto slot = definition.slots.find(key);
    const JsonReader change = perSelector.Member(key);
    if (slot == definition.slots.end()) {
      change.Fail("an entry of " + definition.selector + " as the key, not \"" + key + "\"");
    }
    change.AllowOnly({"min", "max", "inc", "value"});
    ChangeSlot(definition, slot->second, change);
  }
}

bool OnIncrement(double value, double min, double inc) {
  if (inc <= 0.0) return true;
  const double steps = (value - min) / inc;
  return std::fabs(steps - std::nearbyint(steps)) < 1e-9 * std::max(1.0, std::fabs(steps));
}

std::string Where(const FeatureDefinition& definition, const std::string& slotKey) {
  return definition.name +
         (slotKey.empty() ? "" : " (" + definition.selector + " " + slotKey + ")");
}

void CheckSlot(const FeatureDefinition& definition, const std::string& key, const FeatureSlot& slot,
               const JsonReader& place) {
  const std::string where = Where(definition, key);
  auto refuse = [&](const std::string& what) { place.Refuse(where + " " + what); };
  const bool checkMaximum = (definition.computed & kComputedMaximum) == 0;
  if ((definition.computed & kComputedValue) != 0) return;
  switch (definition.type) {
    case OXEL_NODE_TYPE_INTEGER:
      if (slot.intMin > slot.intMax) refuse("has a minimum above its maximum");
      if (slot.intValue < slot.intMin) {
        refuse("value " + std::to_string(slot.intValue) + " below minimum " +
               std::to_string(slot.intMin));
      }
      if (checkMaximum && slot.intValue > slot.intMax) {
        refuse("value " + std::to_string(slot.intValue) + " above maximum " +
               std::to_string(slot.intMax));
      }
      if ((slot.intValue - slot.intMin) % slot.intInc != 0) {
        refuse("value " + std::to_string(slot.intValue) + " not on the increment " +
               std::to_string(slot.intInc) + " above minimum " + std::to_string(slot.intMin));
      }
      break;
    case OXEL_NODE_TYPE_FLOAT:
      if (slot.floatMin > slot.floatMax) refuse("has a minimum above its maximum");
      if (slot.floatValue < slot.floatMin) {
        refuse("value " + NumberText(slot.floatValue) + " below minimum " +
               NumberText(slot.floatMin));
      }
      if (checkMaximum && slot.floatValue > slot.floatMax) {
        refuse("value " + NumberText(slot.floatValue) + " above maximum " +
               NumberText(slot.floatMax));
      }
      if (!OnIncrement(slot.floatValue, slot.floatMin, slot.floatInc)) {
        refuse("value " + NumberText(slot.floatValue) + " not on the increment " +
               NumberText(slot.floatInc));
      }
      break;
    case OXEL_NODE_TYPE_ENUMERATION: {
      const EnumEntryDefinition* entry = definition.FindEntry(slot.text);
      if (entry == nullptr || !entry->available) {
        refuse("value \"" + slot.text + "\" is not an available entry");
      }
      break;
    }
    default:
      break;
  }
}

void CheckAoi(const CameraDescription& camera, const JsonReader& place) {
  auto value = [&](const char* name) {
    const FeatureDefinition* definition = camera.FindFeature(name);
    return definition == nullptr ? 0 : definition->slots.begin()->second.intValue;
  };
  if (value("OffsetX") + value("Width") > camera.sensorWidth) {
    place.Refuse("the area of interest leaves the sensor: OffsetX " +
                 std::to_string(value("OffsetX")) + " + Width " + std::to_string(value("Width")) +
                 " is above the sensor width " + std::to_string(camera.sensorWidth));
  }
  if (value("OffsetY") + value("Height") > camera.sensorHeight) {
    place.Refuse("the area of interest leaves the sensor: OffsetY " +
                 std::to_string(value("OffsetY")) + " + Height " + std::to_string(value("Height")) +
                 " is above the sensor height " + std::to_string(camera.sensorHeight));
  }
}

}  // namespace

void ApplyFeatureChanges(CameraDescription& camera, const JsonReader& cameraPlace) {
  const std::optional<JsonReader> changes = cameraPlace.Optional("features");
  std::vector<std::pair<std::string, JsonReader>> perSelector;
  if (changes) {
    for (const std::string& name : changes->Keys()) {
      const JsonReader change = changes->Member(name);
      FeatureDefinition* definition = Find(camera.features, name);
      if (change.IsString()) {
        if (change.String() != "absent") change.Fail("\"absent\" or an object");
        if (definition == nullptr) change.Fail("\"absent\" only for a feature the camera has");
        RemoveFeature(camera.features, name);
        continue;
      }
      if (definition == nullptr) {
        camera.features.push_back(NewFeature(name, change));
        camera.features.front().children.push_back(name);
        continue;
      }
      if (!change.IsObject()) change.Fail("\"absent\" or an object");
      ChangeFeature(*definition, change);
      if (auto selected = change.Optional("perSelector")) perSelector.emplace_back(name, *selected);
    }
  }
  ExpandSelected(camera.features);
  for (auto& [name, reader] : perSelector) ChangePerSelector(*Find(camera.features, name), reader);

  for (const FeatureDefinition& definition : camera.features) {
    std::optional<JsonReader> place;
    if (changes) place = changes->Optional(definition.name);
    if (!place) place = changes ? *changes : cameraPlace;
    for (const auto& [key, slot] : definition.slots) CheckSlot(definition, key, slot, *place);
  }
  CheckAoi(camera, cameraPlace);
}

}  // namespace oxelsim
