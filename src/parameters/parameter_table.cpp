#include "parameters/parameter_table.h"

#include <cstring>

namespace tavro::parameters {

const std::array<const char*, kParameterCount> kParameterNames = {
    "Brightness",  "Contrast",     "Hue",           "Saturation", "Sharpness",
    "Gamma",       "Color Enable", "White Balance", "Offset",     "Gain Boost",
    "Master Gain", "Red Gain",     "Green Gain",    "Blue Gain",  "Pixel Clock",
    "Exposure",    "Manual Focus", "Digital Zoom",  "Throughput"};

void ClearParameterEntry(ParameterEntry& entry, int32_t index) {
  std::memset(&entry, 0, sizeof entry);
  std::strncpy(entry.szName, kParameterNames[static_cast<size_t>(index)], sizeof entry.szName - 1);
}

void FillParameterEntry(ParameterEntry& entry, const ParameterRow& row) {
  entry.ySupported = 1;
  entry.iDefault = row.defaultValue;
  entry.iCurrent = row.current;
  entry.iMinimum = row.minimum;
  entry.iMaximum = row.maximum;
  entry.iIncrement = row.increment;
}

}  // namespace tavro::parameters
