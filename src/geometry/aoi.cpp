#include "geometry/aoi.h"

#include <algorithm>
#include <sstream>

#include "diagnostics/debug_output.h"

namespace tavro::geometry {
namespace {

// Host rectangles are arbitrary 32-bit values; widening keeps the
// differences and sums below from overflowing.
int64_t RoundDown(int64_t value, int64_t increment) {
  if (increment == 0) increment = 1;
  return value - value % increment;
}

// Raised to the minimum first, then lowered to the maximum.
int64_t RaiseThenLower(int64_t value, int64_t minimum, int64_t maximum) {
  return std::min(std::max(value, minimum), maximum);
}

int32_t Narrow(int64_t value) {
  return static_cast<int32_t>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

}  // namespace

std::array<int32_t, 12> AoiLimits::Values() const {
  return {minLeft,  minTop,    maxLeft,  maxTop,    leftIncrement,  topIncrement,
          minWidth, minHeight, maxWidth, maxHeight, widthIncrement, heightIncrement};
}

AoiRect FitAoi(const AoiRect& requested, const AoiLimits& limits, int32_t widthMax,
               int32_t heightMax) {
  const int64_t width = int64_t{requested.right} - requested.left;
  const int64_t height = int64_t{requested.bottom} - requested.top;

  // Offsets: the quotient times the increment, i.e. rounded toward zero.
  const int64_t left = RaiseThenLower(RoundDown(requested.left, limits.leftIncrement),
                                      limits.minLeft, limits.maxLeft);
  const int64_t top =
      RaiseThenLower(RoundDown(requested.top, limits.topIncrement), limits.minTop, limits.maxTop);
  const int64_t fittedWidth =
      RaiseThenLower(RoundDown(width, limits.widthIncrement), limits.minWidth, limits.maxWidth);
  const int64_t fittedHeight =
      RaiseThenLower(RoundDown(height, limits.heightIncrement), limits.minHeight, limits.maxHeight);

  AoiRect fitted;
  fitted.left = Narrow(left);
  fitted.top = Narrow(top);
  fitted.right = Narrow(std::min<int64_t>(left + fittedWidth, widthMax));
  fitted.bottom = Narrow(std::min<int64_t>(top + fittedHeight, heightMax));
  return fitted;
}

std::string AoiLimitsText(const AoiLimits& limits) {
  std::ostringstream text;
  text << "minXY:" << limits.minLeft << ',' << limits.minTop << "::"
       << "maxXY:" << limits.maxLeft << ',' << limits.maxTop << "::"
       << "incXY:" << limits.leftIncrement << ',' << limits.topIncrement << "::"
       << "minWH:" << limits.minWidth << ',' << limits.minHeight << "::"
       << "maxWH:" << limits.maxWidth << ',' << limits.maxHeight << "::"
       << "incWH:" << limits.widthIncrement << ',' << limits.heightIncrement;
  return text.str();
}

void PrintAoiLimits(const std::optional<AoiLimits>& limits) {
  if (!limits) return;
  using diagnostics::StdoutLine;
  StdoutLine("The following represents the AOI parameters as a string: ");
  StdoutLine("--------------------------------------------------------");
  StdoutLine(AoiLimitsText(*limits));
  StdoutLine("---\t-----------------------------------------------------");
}

}  // namespace tavro::geometry
