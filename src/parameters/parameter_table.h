// The host's fixed table of 19 camera parameters: their names in table order
// and the writing of one row into a host ParameterEntry.
#pragma once

#include <array>
#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::parameters {

inline constexpr int32_t kParameterCount = TAVRO_NUM_PARAMS;

// Index i is parameter i everywhere: the host table, aiApplied and the
// dispatch of the host's changes.
extern const std::array<const char*, kParameterCount> kParameterNames;

// Values of a supported row, in host units.
struct ParameterRow {
  int32_t defaultValue = 0;
  int32_t current = 0;
  int32_t minimum = 0;
  int32_t maximum = 0;
  int32_t increment = 0;
};

// Clears all 92 bytes of the entry and writes parameter `index`'s name: an
// unsupported row, all values 0.
void ClearParameterEntry(ParameterEntry& entry, int32_t index);

// Marks the entry supported with the row's values.
void FillParameterEntry(ParameterEntry& entry, const ParameterRow& row);

}  // namespace tavro::parameters
