// Area-of-interest rectangles and the camera's rules for them: the twelve
// limits read from "OffsetX", "OffsetY", "Width" and "Height", fitting a
// requested rectangle to those rules, and the limits' text and report.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace tavro::geometry {

// Right and bottom are exclusive: width = right - left.
struct AoiRect {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;
  int32_t bottom = 0;

  int32_t Width() const { return right - left; }
  int32_t Height() const { return bottom - top; }
  friend bool operator==(const AoiRect&, const AoiRect&) = default;
};

// Twelve values in the order the host's geometry block uses; the layout is
// standard so that it can be copied into that block as it stands.
struct AoiLimits {
  int32_t minLeft = 0;
  int32_t minTop = 0;
  int32_t maxLeft = 0;
  int32_t maxTop = 0;
  int32_t leftIncrement = 0;
  int32_t topIncrement = 0;
  int32_t minWidth = 0;
  int32_t minHeight = 0;
  int32_t maxWidth = 0;
  int32_t maxHeight = 0;
  int32_t widthIncrement = 0;
  int32_t heightIncrement = 0;

  std::array<int32_t, 12> Values() const;
  friend bool operator==(const AoiLimits&, const AoiLimits&) = default;
};

// Rounds the offsets down to their increments and the sizes down to theirs,
// clamps each to its range and cuts the rectangle at the sensor edge. An
// increment of 0 (no conforming camera reports one) counts as 1.
AoiRect FitAoi(const AoiRect& requested, const AoiLimits& limits, int32_t widthMax,
               int32_t heightMax);

// "minXY:0,0::maxXY:1920,1200::incXY:8,2::minWH:16,2::maxWH:1936,1216::incWH:8,2"
std::string AoiLimitsText(const AoiLimits& limits);

// The limits report on standard output; nothing when no limits are known.
void PrintAoiLimits(const std::optional<AoiLimits>& limits);

}  // namespace tavro::geometry
