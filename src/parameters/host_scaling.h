// Conversions between the host's whole-number parameter values and camera
// feature values: linear over ranges cached at discovery, rounding by adding
// 0.5 and truncating.
#pragma once

#include <cstdint>

namespace tavro::parameters {

// A float feature mapped linearly onto the host scale 0..hostMaximum
// (gain: 0..100 percent, black level: 0..255).
struct LinearScale {
  double minimum = 0.0;
  double range = 0.0;  // 0: no range known
  int32_t hostMaximum = 100;

  // The host value is clamped to 0..hostMaximum first.
  double ToCamera(int32_t hostValue) const;
  // 0 without a known range; otherwise rounded and lowered to hostMaximum.
  // There is no lower bound: a camera value below the minimum reads as 0 or
  // less.
  int32_t ToHost(double cameraValue) const;
};

// The link throughput limit: an integer feature with an increment, mapped
// onto 0..100 percent.
struct ThroughputScale {
  int64_t minimum = 0;
  int64_t range = 0;  // 0: no range known
  int64_t increment = 0;

  // Nearest whole unit (halves up), then down to a whole number of
  // increments above the minimum. An increment of 0 counts as 1.
  int64_t ToCamera(int32_t percent) const;
  // 0 without a known range; otherwise the nearest percent, clamped 0..100.
  int32_t ToHost(int64_t cameraValue) const;
};

// Exposure requests are clamped to the camera's range: below the minimum
// becomes the minimum, otherwise at most the maximum.
double ClampToRange(double request, double minimum, double maximum);

// Host rounding rules for double values reported as 32-bit integers:
// "rounded" adds 0.5 and truncates, "truncated" truncates toward zero.
// Values beyond the 32-bit range saturate.
int32_t Rounded(double value);
int32_t Truncated(double value);

}  // namespace tavro::parameters
