// A producer file's "features" object: changes to a camera's standard
// features (ranges, values, access, entries, removal) and features of its own.
#pragma once

#include "producer/json_reader.h"
#include "producer/producer_file.h"

namespace oxelsim {

// Applies the "features" member of the camera's object (`cameraPlace`), if
// any, to `camera.features`; gives every selected feature one slot per entry
// of its selector; and checks every value against its range. Fails with
// CTI_LOADING_ERROR naming the JSON pointer.
void ApplyFeatureChanges(CameraDescription& camera, const JsonReader& cameraPlace);

}  // namespace oxelsim
