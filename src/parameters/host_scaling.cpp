#include "parameters/host_scaling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace tavro::parameters {
namespace {

using Wide = __int128;

int64_t Saturate(Wide value) {
  return static_cast<int64_t>(std::clamp<Wide>(value, INT64_MIN, INT64_MAX));
}

}  // namespace

int32_t Truncated(double value) {
  // Converting an out-of-range double to an integer is undefined; saturate
  // instead (NaN reads as 0).
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return INT32_MAX;
  if (value <= -2147483648.0) return INT32_MIN;
  return static_cast<int32_t>(value);
}

int32_t Rounded(double value) {
  return Truncated(value + 0.5);
}

double ClampToRange(double request, double minimum, double maximum) {
  if (minimum > request) return minimum;
  return std::min(maximum, request);
}

double LinearScale::ToCamera(int32_t hostValue) const {
  const int32_t clamped = std::clamp(hostValue, 0, hostMaximum);
  return clamped / static_cast<double>(hostMaximum) * range + minimum;
}

int32_t LinearScale::ToHost(double cameraValue) const {
  if (range == 0.0) return 0;
  const int32_t host = Rounded((cameraValue - minimum) / range * hostMaximum);
  return std::min(host, hostMaximum);
}

int64_t ThroughputScale::ToCamera(int32_t percent) const {
  // 128-bit intermediates: a camera may report any 64-bit range.
  const Wide p = std::clamp(percent, 0, 100);
  Wide offset = (p * range + 50) / 100;
  const Wide step = increment == 0 ? 1 : increment;
  offset -= offset % step;
  return Saturate(minimum + offset);
}

int32_t ThroughputScale::ToHost(int64_t cameraValue) const {
  if (range == 0) return 0;
  const Wide percent = (Wide{range} / 2 + (Wide{cameraValue} - minimum) * 100) / range;
  return static_cast<int32_t>(std::clamp<Wide>(percent, 0, 100));
}

}  // namespace tavro::parameters
