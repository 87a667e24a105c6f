// The standard GenICam features every simulated camera has unless its
// producer file changes them.
#pragma once

#include <vector>

#include "camera/feature_definition.h"
#include "producer/producer_file.h"

namespace oxelsim {

// Selected features (Gain by GainSelector, TriggerMode by TriggerSelector, ...)
// come with one slot under "" that ExpandSelectedFeatures copies to every
// entry of their selector.
std::vector<FeatureDefinition> StandardFeatures(const CameraDescription& camera);

}  // namespace oxelsim
