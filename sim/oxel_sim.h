/*
 * Control functions of the simulated Oxel camera library (liboxel.so.1).
 *
 * Tests and the reference host use these to act on the simulated hardware:
 * unplug and replug a camera, raise an edge on line 0, lose, delay or cut
 * frames, make a feature refuse writes or the data stream refuse to start, or
 * pretend another process holds a camera. The
 * plug-in never calls them. Cameras are addressed by their device ID (the
 * "id" of the camera in its producer file). Each function returns an
 * OXEL_RETURN_CODE and records a last error like every other call.
 *
 * They act on the cameras of the producer files loaded now, and work whether
 * or not the library is started: a camera not loaded yet is looked for in the
 * producer files on GENICAM_GENTL64_PATH, so a test can prepare a camera
 * before the code under test starts the library. When the last user closes
 * the library, the loaded files and their cameras are forgotten: the next
 * start (or control function) reads the files afresh. An unknown ID fails
 * with OXEL_RETURN_CODE_NOT_FOUND. docs/simulator-producer-files.md
 * describes the cameras' behaviour.
 *
 * Frame pattern: every delivered pixel is a pure function of its sensor
 * position (x, y: the AOI offset is included) and of the frame's ID, so a test
 * can check every byte it receives with the inline functions below.
 */
#ifndef OXEL_OXEL_SIM_H
#define OXEL_OXEL_SIM_H

#include <stdint.h>

#include "oxel/oxel_c.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Pixel format codes (PFNC) the simulator produces. */
#define OXEL_SIM_PIXEL_FORMAT_MONO8 UINT64_C(0x01080001)
#define OXEL_SIM_PIXEL_FORMAT_BGR8 UINT64_C(0x02180015)

/* Frame IDs start this far below the 64-bit wrap-around. */
#define OXEL_SIM_FIRST_FRAME_ID (UINT64_MAX - UINT64_C(299))

/* Reverts every camera of every loaded producer to the state its producer
 * file describes: plugged in (unless the file says otherwise), feature values,
 * faults (none unless the file arms some; delayed, incomplete frames and
 * refused stream starts cleared), frame IDs from OXEL_SIM_FIRST_FRAME_ID,
 * write and ignored-trigger counts 0, frames in flight gone. Open devices
 * stay open. */
OXEL_RETURN_CODE OxelSim_ResetAll(void);

/* The next device update reports the camera lost (or found again). An opened
 * camera stops answering: its feature accesses and data-stream calls fail
 * with OXEL_RETURN_CODE_ERROR (a wait in progress ends so), and no frame
 * arrives. */
OXEL_RETURN_CODE OxelSim_UnplugCamera(const char* deviceId);
OXEL_RETURN_CODE OxelSim_ReplugCamera(const char* deviceId);

/* A pulse on line 0: a rising edge followed by a falling one. A camera
 * triggered on either edge of line 0 takes one frame (if it is acquiring). */
OXEL_RETURN_CODE OxelSim_PulseLine0(const char* deviceId);

/* The next `count` frames the camera would send never arrive (count -1: all
 * of them until the next call with 0). */
OXEL_RETURN_CODE OxelSim_DropFrames(const char* deviceId, int32_t count);

/* The next `count` frames the camera sends arrive `delayMs` milliseconds
 * later than their timing says (count -1: all of them until the next call
 * with 0). The camera is free for its next trigger when a frame is read out,
 * whatever the delay. A delayed frame arrives in the output queue like any
 * other while its data stream still grabs; once the stream is stopped it is
 * lost. */
OXEL_RETURN_CODE OxelSim_DelayFrames(const char* deviceId, int32_t count, uint32_t delayMs);

/* The next `count` frames arrive flagged incomplete with only the first half
 * of their payload written (count -1: all of them until the next call with
 * 0). */
OXEL_RETURN_CODE OxelSim_IncompleteFrames(const char* deviceId, int32_t count);

/* The next `count` starts of the camera's data stream
 * (OXEL_DataStream_StartAcquisition) fail with `code` and leave the stream
 * stopped (count -1: every start until the next call with 0). */
OXEL_RETURN_CODE OxelSim_FailStreamStarts(const char* deviceId, int32_t count,
                                          OXEL_RETURN_CODE code);

/* How many triggers the camera ignored because it was still exposing or
 * reading out a frame, since it was opened or reset. */
OXEL_RETURN_CODE OxelSim_GetIgnoredTriggerCount(const char* deviceId, uint64_t* count);

/* The next `count` writes to the feature fail with `code` (count -1: every
 * write until the next call with 0). */
OXEL_RETURN_CODE OxelSim_FailFeatureWrites(const char* deviceId, const char* featureName,
                                           int32_t count, OXEL_RETURN_CODE code);

/* Marks the camera as opened by another process (access status Busy, not
 * openable) or releases that mark. */
OXEL_RETURN_CODE OxelSim_SetOpenedElsewhere(const char* deviceId, OXEL_BOOL8 openedElsewhere);

/* ID of the last frame the camera delivered to a buffer
 * (OXEL_RETURN_CODE_NOT_AVAILABLE before the first one). */
OXEL_RETURN_CODE OxelSim_GetLastFrameId(const char* deviceId, uint64_t* frameId);

/* How many writes the feature has received since the camera was opened or
 * reset (every write call, accepted or refused). */
OXEL_RETURN_CODE OxelSim_GetFeatureWriteCount(const char* deviceId, const char* featureName,
                                              uint64_t* count);

/* The pattern: a ramp along x whose phase moves with y and with the frame. */
static inline uint8_t OxelSim_PatternMono8(uint32_t x, uint32_t y, uint64_t frameId) {
  return (uint8_t)(x + 7u * y + (uint32_t)frameId);
}
/* channel: 0 blue, 1 green, 2 red (the byte order of BGR8). */
static inline uint8_t OxelSim_PatternBgr8(uint32_t x, uint32_t y, uint64_t frameId,
                                          uint32_t channel) {
  return (uint8_t)(x + 7u * y + (uint32_t)frameId + 85u * channel);
}

#ifdef __cplusplus
}
#endif

#endif /* OXEL_OXEL_SIM_H */
