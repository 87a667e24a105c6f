// The image formats a camera reports to the host (one entry: the full sensor
// in the chosen pixel format), their texts and the format report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "geometry/aoi.h"

namespace tavro::geometry {

struct FormatEntry {
  int32_t left = 0;
  int32_t top = 0;
  int32_t width = 0;
  int32_t height = 0;
  uint32_t formatId = 0;
  std::string name;
};

using FormatList = std::vector<FormatEntry>;

// The full-sensor entry, sized by the limits' maximum width and height.
FormatEntry FullSensorFormat(const AoiLimits& limits, const std::string& cameraKey);

// "1936X1216:0"
std::string FormatText(const FormatEntry& entry);
// "0,0 --> 1935,1215"
std::string FormatAoiText(const FormatEntry& entry);
// The format texts joined by "::"; empty for an empty list.
std::string AllFormatsText(const FormatList& formats);

// Copies the name into a fixed host field of `size` bytes: zero-filled after
// the name, and without a terminator when the name fills the field.
void CopyFormatName(const FormatEntry& entry, char* destination, size_t size);

// The format report on standard output.
void PrintFormats(const FormatList& formats);

}  // namespace tavro::geometry
