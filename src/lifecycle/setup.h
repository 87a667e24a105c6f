// Setup: the host's records and the acquisition table brought to their
// initial state, the camera library started, the usable cameras listed and
// opened. Also the copy of the host's camera selection text, which
// re-attach lists cameras with again.
#pragma once

#include <cstdint>

#include "tavro/tavro_host.h"

namespace tavro::lifecycle {

// 0 when at least one camera is listed, else -1. `widest` and `highest`
// receive the largest sensor size among the opened cameras.
int32_t SetupCameras(SystemRecord* system, const char* selection, int* widest, int* highest);

// Every camera record, slot and map entry as before any camera is opened;
// iNumCams 0.
void ResetCameraRecords(SystemRecord& system);

// Every acquisition table entry idle and bound to `system`, each with a new
// signalled event.
void ResetAcquisitionTable(SystemRecord* system);

// Frees the record's selection copy and stores a new one when `selection`
// is neither null nor empty.
void ReplaceCameraSelection(SystemRecord& system, const char* selection);
void FreeCameraSelection(SystemRecord& system);

// Ends the camera library start of the last setup (or, with none, answers
// the library's own failure): the next setup starts it again.
void CloseCameraLibrary();

}  // namespace tavro::lifecycle
