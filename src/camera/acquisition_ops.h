// The acquisition work behind the entry points, on the host's records and
// the acquisition table: a single image, live acquisition, and waiting for
// an acquisition. The entry points have checked the record, the image and
// the camera number, and set the status word to 0.
#pragma once

#include <cstdint>

#include "camera/live_run.h"
#include "host_interface/acquisition_table.h"
#include "tavro/tavro_host.h"

namespace tavro::camera {

// The single-image sequence for attached camera `number`: 0, -1 or the
// result of the wait when `wait` is set.
int32_t AcquireSequence(CamImage* image, uint32_t wait, uint32_t userValue, uint32_t* status,
                        SystemRecord* system, int32_t number);

// Hands the acquisition's end to the host, once: whoever reports it clears
// yAcquiring. A host that left the callback null is told nothing.
void ReportFinished(host_interface::TavroCamAcq& entry, const SystemRecord& system);

// Starts (start non-zero) or stops live acquisition into the image. A start
// stops the camera first, dropping a pending single image unreported; a stop
// with nothing live reports that camera's pending image finished. A start
// while a live run that died is still marked ends that run and is refused
// as while it ran; a stop ends it as any live run.
int32_t LiveAcquire(CamImage* image, uint32_t start, uint32_t userValue, uint32_t* status,
                    SystemRecord* system) TAVRO_EXCLUDES(liveRunMutex);
int32_t LiveAcquireLocked(CamImage* image, uint32_t start, uint32_t userValue, uint32_t* status,
                          SystemRecord* system) TAVRO_REQUIRES(liveRunMutex);

// A single acquisition on camera `number` first stops live acquisition on
// whichever camera runs it: 0, or -1 when the live camera would not stop.
int32_t StopLiveForAcquisition(CamImage* image, uint32_t userValue, uint32_t* status,
                               SystemRecord* system, int32_t number) TAVRO_EXCLUDES(liveRunMutex);

// True when a live start must be refused because live runs (or ran and
// died: such a run is ended here, so that the next start works).
bool RefuseLiveStart(SystemRecord& system) TAVRO_EXCLUDES(liveRunMutex);

// Ends the live run without reading the live image, for a caller that no
// longer trusts it: the live camera is stopped, so that its worker writes
// nothing more into the host's planes, and yLive is cleared in any case.
// Nothing is reported.
void AbandonLiveRun(SystemRecord& system) TAVRO_REQUIRES(liveRunMutex);

// True when the system's live run has died: its camera's worker gave up
// (unplugged camera, refused trigger, lost frame) while live was still
// wanted. Reads flags only; any thread may ask, and it never waits.
bool LiveRunDied(const SystemRecord& system);

// Ends a live run that died: the camera is brought to rest, the run is
// reported through pfnAcqFinished and both yLive flags are cleared. False,
// doing nothing, while live runs or when nothing is live.
bool EndDeadLiveRun(SystemRecord& system) TAVRO_EXCLUDES(liveRunMutex);
bool EndDeadLiveRunLocked(SystemRecord& system) TAVRO_REQUIRES(liveRunMutex);

// Waits for camera `number`'s acquisition into the image and delivers it;
// the two values have no effect.
int32_t WaitForAcquisition(CamImage* image, int32_t number, uint32_t value1, uint32_t value2,
                           uint32_t* status, SystemRecord* system);

// Brings camera `number` to rest and ends its acquisition without a report
// to the host: 0, or -1 with ACQERR_CAMERA_OP when the camera's worker would
// not stop. The image has no effect.
int32_t StopCameraAcquisition(CamImage* image, SystemRecord* system, int32_t number,
                              uint32_t* status);

}  // namespace tavro::camera
