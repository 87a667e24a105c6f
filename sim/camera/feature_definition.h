// What a simulated camera feature is: its kind, access, ranges and values.
// A producer file yields one FeatureDefinition per feature (the camera's power-on
// state); the running camera keeps a copy that its writes change.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "core/api.h"
#include "oxel/oxel_c.h"

namespace oxelsim {

// The state of a feature for one entry of its selector ("" when it has none).
struct FeatureSlot {
  int64_t intValue = 0;  // Integer, Boolean (0 or 1)
  int64_t intMin = 0;
  int64_t intMax = 0;
  int64_t intInc = 1;
  double floatValue = 0.0;
  double floatMin = 0.0;
  double floatMax = 0.0;
  double floatInc = 0.0;  // 0: no constant increment
  std::string text;       // String value, or the enumeration's current entry
};

struct EnumEntryDefinition {
  std::string symbolic;
  int64_t value = 0;
  bool available = true;
};

// Parts of a feature that the camera computes instead of storing.
enum Computed : unsigned {
  kComputedNone = 0,
  kComputedMinimum = 1,
  kComputedMaximum = 2,
  kComputedValue = 4,
};

struct FeatureDefinition {
  std::string name;
  OXEL_NODE_TYPE type = OXEL_NODE_TYPE_INTEGER;
  OXEL_NODE_ACCESS_STATUS access = OXEL_NODE_ACCESS_STATUS_READ_WRITE;
  unsigned computed = kComputedNone;
  std::string selector;                      // enumeration choosing the slot, or empty
  std::map<std::string, FeatureSlot> slots;  // by selector entry; "" without selector
  std::vector<EnumEntryDefinition> entries;  // enumerations
  std::vector<std::string> children;         // categories
  int64_t registerLength = 0;                // registers
  std::string unit;

  const EnumEntryDefinition* FindEntry(const std::string& symbolic) const;
};

// "OffsetX" -> "Offset X", "TLParamsLocked" -> "TL Params Locked".
std::string DisplayNameOf(const std::string& name);

}  // namespace oxelsim
