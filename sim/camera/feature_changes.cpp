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
void ChangeSlot(const FeatureSpec& spec, FeatureSlot& slot, const JsonReader& change) {
  auto part = [&](const char* key, unsigned computed) -> std::optional<JsonReader> {
    std::optional<JsonReader> member = change.Optional(key);
    if (member && (spec.computed & computed) != 0) {
      member->Fail(std::string("no \"") + key + "\": the camera computes the " + key + " of " +
                   spec.name);
    }
    return member;
  };
  switch (spec.type) {
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

std::vector<EnumEntrySpec> ParseEntries(const JsonReader& reader) {
  std::vector<EnumEntrySpec> entries;
  for (const JsonReader& item : reader.Array()) {
    EnumEntrySpec entry;
    entry.value = static_cast<int64_t>(entries.size());
    if (item.IsString()) {
      entry.symbolic = item.NonEmptyString();
    } else {
      item.AllowOnly({"name", "available", "value"});
      entry.symbolic = item.Member("name").NonEmptyString();
      if (auto available = item.Optional("available")) entry.available = available->Boolean();
      if (auto value = item.Optional("value")) entry.value = value->Integer();
    }
    for (const EnumEntrySpec& other : entries) {
      if (other.symbolic == entry.symbolic) item.Fail("entry names that differ");
    }
    entries.push_back(entry);
  }
  if (entries.empty()) reader.Fail("at least one entry");
  return entries;
}

void AllowKeysFor(const FeatureSpec& spec, const JsonReader& change) {
  switch (spec.type) {
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

void ChangeFeature(FeatureSpec& spec, const JsonReader& change) {
  AllowKeysFor(spec, change);
  if (auto type = change.Optional("type")) {
    if (ParseType(*type) != spec.type) {
      type->Fail(std::string("\"") + NodeTypeName(spec.type) + "\", the kind of " + spec.name);
    }
  }
  if (auto access = change.Optional("access")) spec.access = ParseAccess(*access);
  if (auto entries = change.Optional("entries")) {
    if (spec.name == "PixelFormat") {
      entries->Fail("no \"entries\" for PixelFormat: list the formats in \"pixelFormats\"");
    }
    spec.entries = ParseEntries(*entries);
    const bool keepsCurrent = spec.FindEntry(spec.slots.begin()->second.text) != nullptr;
    if (!keepsCurrent) {
      for (auto& [key, slot] : spec.slots) slot.text = spec.entries.front().symbolic;
    }
  }
  if (auto unit = change.Optional("unit")) spec.unit = unit->String();
  if (auto length = change.Optional("length")) spec.registerLength = length->Positive();
  for (auto& [key, slot] : spec.slots) ChangeSlot(spec, slot, change);
}

FeatureSpec NewFeature(const std::string& name, const JsonReader& change) {
  if (!change.IsObject() || !change.Optional("type")) {
    change.Refuse("'" + name +
                  "' is not a feature of this camera; check the name, or give the \"type\" of "
                  "a feature of its own");
  }
  FeatureSpec spec;
  spec.name = name;
  spec.type = ParseType(change.Member("type"));
  if (spec.type == OXEL_NODE_TYPE_ENUMERATION_ENTRY || spec.type == OXEL_NODE_TYPE_CATEGORY) {
    change.Member("type").Fail("a feature kind other than Category");
  }
  FeatureSlot& slot = spec.slots[""];
  slot.intMax = spec.type == OXEL_NODE_TYPE_BOOLEAN ? 1 : 100;
  slot.floatMax = 100.0;
  if (spec.type == OXEL_NODE_TYPE_COMMAND) spec.access = OXEL_NODE_ACCESS_STATUS_WRITE_ONLY;
  if (spec.type == OXEL_NODE_TYPE_REGISTER) spec.registerLength = 4;
  if (spec.type == OXEL_NODE_TYPE_ENUMERATION) {
    spec.entries = ParseEntries(change.Member("entries"));
    slot.text = spec.entries.front().symbolic;
  }
  if (change.Optional("perSelector")) {
    change.Member("perSelector").Fail("no \"perSelector\": features of a file have no selector");
  }
  ChangeFeature(spec, change);
  return spec;
}

void RemoveFeature(std::vector<FeatureSpec>& features, const std::string& name) {
  std::erase_if(features, [&](const FeatureSpec& spec) { return spec.name == name; });
  for (FeatureSpec& spec : features) std::erase(spec.children, name);
}

FeatureSpec* Find(std::vector<FeatureSpec>& features, const std::string& name) {
  for (FeatureSpec& spec : features) {
    if (spec.name == name) return &spec;
  }
  return nullptr;
}

// Gives every selected feature one slot per entry of its selector.
void ExpandSelected(std::vector<FeatureSpec>& features) {
  for (FeatureSpec& spec : features) {
    if (spec.selector.empty()) continue;
    const FeatureSpec* selector = Find(features, spec.selector);
    const FeatureSlot common = spec.slots.begin()->second;
    spec.slots.clear();
    if (selector == nullptr || selector->type != OXEL_NODE_TYPE_ENUMERATION) {
      spec.selector.clear();
      spec.slots[""] = common;
      continue;
    }
    for (const EnumEntrySpec& entry : selector->entries) spec.slots[entry.symbolic] = common;
  }
}

void ChangePerSelector(FeatureSpec& spec, const JsonReader& perSelector) {
  if (spec.selector.empty()) {
    perSelector.Fail("no \"perSelector\": " + spec.name + " has no selector on this camera");
  }
  for (const std::string& key : perSelector.Keys()) {
    auto slot = spec.slots.find(key);
    const JsonReader change = perSelector.Member(key);
    if (slot == spec.slots.end()) {
      change.Fail("an entry of " + spec.selector + " as the key, not \"" + key + "\"");
    }
    change.AllowOnly({"min", "max", "inc", "value"});
    ChangeSlot(spec, slot->second, change);
  }
}

bool OnIncrement(double value, double min, double inc) {
  if (inc <= 0.0) return true;
  const double steps = (value - min) / inc;
  return std::fabs(steps - std::nearbyint(steps)) < 1e-9 * std::max(1.0, std::fabs(steps));
}

std::string Where(const FeatureSpec& spec, const std::string& slotKey) {
  return spec.name + (slotKey.empty() ? "" : " (" + spec.selector + " " + slotKey + ")");
}

void CheckSlot(const FeatureSpec& spec, const std::string& key, const FeatureSlot& slot,
               const JsonReader& place) {
  const std::string where = Where(spec, key);
  auto refuse = [&](const std::string& what) { place.Refuse(where + " " + what); };
  const bool checkMaximum = (spec.computed & kComputedMaximum) == 0;
  if ((spec.computed & kComputedValue) != 0) return;
  switch (spec.type) {
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
      const EnumEntrySpec* entry = spec.FindEntry(slot.text);
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
    const FeatureSpec* spec = camera.FindFeature(name);
    return spec == nullptr ? 0 : spec->slots.begin()->second.intValue;
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
      FeatureSpec* spec = Find(camera.features, name);
      if (change.IsString()) {
        if (change.String() != "absent") change.Fail("\"absent\" or an object");
        if (spec == nullptr) change.Fail("\"absent\" only for a feature the camera has");
        RemoveFeature(camera.features, name);
        continue;
      }
      if (spec == nullptr) {
        camera.features.push_back(NewFeature(name, change));
        camera.features.front().children.push_back(name);
        continue;
      }
      if (!change.IsObject()) change.Fail("\"absent\" or an object");
      ChangeFeature(*spec, change);
      if (auto selected = change.Optional("perSelector")) perSelector.emplace_back(name, *selected);
    }
  }
  ExpandSelected(camera.features);
  for (auto& [name, reader] : perSelector) ChangePerSelector(*Find(camera.features, name), reader);

  for (const FeatureSpec& spec : camera.features) {
    std::optional<JsonReader> place;
    if (changes) place = changes->Optional(spec.name);
    if (!place) place = changes ? *changes : cameraPlace;
    for (const auto& [key, slot] : spec.slots) CheckSlot(spec, key, slot, *place);
  }
  CheckAoi(camera, cameraPlace);
}

}  // namespace oxelsim
