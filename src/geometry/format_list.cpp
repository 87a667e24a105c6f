#include "geometry/format_list.h"

#include <cstring>
#include <sstream>

#include "diagnostics/debug_output.h"

namespace tavro::geometry {

FormatEntry FullSensorFormat(const AoiLimits& limits, const std::string& cameraKey) {
  FormatEntry entry;
  entry.width = limits.maxWidth;
  entry.height = limits.maxHeight;
  entry.name = cameraKey;
  return entry;
}

std::string FormatText(const FormatEntry& entry) {
  std::ostringstream text;
  text << entry.width << 'X' << entry.height << ':' << entry.formatId;
  return text.str();
}

std::string FormatAoiText(const FormatEntry& entry) {
  // Widened so that a degenerate entry cannot overflow the corner arithmetic.
  const int64_t lastColumn = int64_t{entry.left} + entry.width - 1;
  const int64_t lastRow = int64_t{entry.top} + entry.height - 1;
  std::ostringstream text;
  text << entry.left << ',' << entry.top << " --> " << lastColumn << ',' << lastRow;
  return text.str();
}

std::string AllFormatsText(const FormatList& formats) {
  std::string text;
  for (size_t k = 0; k < formats.size(); ++k) {
    if (k > 0) text += "::";
    text += FormatText(formats[k]);
  }
  return text;
}

void CopyFormatName(const FormatEntry& entry, char* destination, size_t size) {
  // strncpy's contract is exactly the host field's: zero padding, no
  // terminator when the text fills the field.
  std::strncpy(destination, entry.name.c_str(), size);
}

void PrintFormats(const FormatList& formats) {
  using diagnostics::StdoutLine;
  const char* const rule = "--------------------------------------------------------";
  StdoutLine("The following ", static_cast<int32_t>(formats.size()),
             " image formats are supported: ");
  StdoutLine(rule);
  for (const FormatEntry& entry : formats) {
    StdoutLine(FormatText(entry), "\tBinning:", 0, "\tSubsampling:", 0,
               "\tAOI:", FormatAoiText(entry));
  }
  StdoutLine(rule);
}

}  // namespace tavro::geometry
