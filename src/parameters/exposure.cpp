// Exposure ("ExposureTime") and frame rate ("AcquisitionFrameRate"): every
// exposure change raises the frame rate to its new maximum.
#include <exception>

#include "camera/features.h"
#include "camera/oxel_camera.h"
#include "parameters/host_scaling.h"
#include "parameters/trigger_mode.h"

namespace tavro::camera {
namespace {

using oxel::core::nodes::FloatNode;

constexpr const char* kExposureTime = "ExposureTime";
// Above any real camera's maximum: asks for the fastest rate allowed.
constexpr double kFastestFrameRate = 10000.0;

}  // namespace

double OxelCamera::GetExposure() {
  try {
    return ReadFloat(nodeMap, kExposureTime);
  } catch (const std::exception&) {
    return -1.0;
  }
}

bool OxelCamera::IsExposureSupported() {
  return GetExposure() >= 0.0;
}

void OxelCamera::GetExposureRange(double& minimum, double& maximum, double& defaultValue,
                                  double& increment) {
  // What was read before a failure is reported as read, the rest as 0.
  double range[3] = {0.0, 0.0, 0.0};
  try {
    range[0] = Feature<FloatNode>(nodeMap, kExposureTime)->Minimum();
    range[1] = Feature<FloatNode>(nodeMap, kExposureTime)->Maximum();
    if (Feature<FloatNode>(nodeMap, kExposureTime)->HasConstantIncrement()) {
      range[2] = Feature<FloatNode>(nodeMap, kExposureTime)->Increment();
    }
  } catch (const std::exception&) {
  }
  minimum = range[0];
  maximum = range[1];
  defaultValue = range[0];
  increment = range[2];
}

bool OxelCamera::SetExposure(double exposure) {
  Stop();
  double minimum, maximum, defaultValue, increment;
  GetExposureRange(minimum, maximum, defaultValue, increment);
  const double value = parameters::ClampToRange(exposure, minimum, maximum);
  bool written = false;
  if (value >= 0.0) {
    try {
      Feature<FloatNode>(nodeMap, kExposureTime)->SetValue(value);
      written = true;
    } catch (const std::exception&) {
    }
  }
  SetFrameRate(kFastestFrameRate);
  return written;
}

void OxelCamera::SetFrameRate(double framesPerSecond) {
  Stop();
  // The rate is written with the trigger off; whoever starts the next
  // acquisition selects the trigger it needs.
  SetTriggerMode(parameters::TriggerModeOff, true);
  try {
    const auto rate = Feature<FloatNode>(nodeMap, "AcquisitionFrameRate");
    const double minimum = rate->Minimum();
    const double maximum = rate->Maximum();
    rate->SetValue(parameters::ClampToRange(framesPerSecond, minimum, maximum));
  } catch (const std::exception&) {
    // A camera without an adjustable frame rate runs at its own.
  }
}

}  // namespace tavro::camera
