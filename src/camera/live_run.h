// The system's one live run. Starting, stopping and ending it touches the
// live camera and the live fields of the host's record from whichever host
// thread asks (an acquisition on any camera stops it, a stop through any
// image ends it), so those changes happen under one module-wide lock. Who
// only reads the fields (the status query, the worker's display) takes no
// lock and never waits for it.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/annotated_mutex.h"

namespace tavro::camera {

// Recursive: pfnAcqFinished is called under it, and a host may call the
// plug-in again from inside its callback. Functions of this module that
// need it held say so (TAVRO_REQUIRES); the others take it themselves.
extern platform::RecursiveMutex liveRunMutex;

class TAVRO_SCOPED_CAPABILITY LiveRunLock {
 public:
  LiveRunLock() TAVRO_ACQUIRE(liveRunMutex) { liveRunMutex.lock(); }
  ~LiveRunLock() TAVRO_RELEASE() { liveRunMutex.unlock(); }
  LiveRunLock(const LiveRunLock&) = delete;
  LiveRunLock& operator=(const LiveRunLock&) = delete;
};

// Set by camera `number`'s worker when its live loop ended by itself (a
// refused trigger, a frame that failed or never came) while live was still
// wanted; cleared when the host's side ends or restarts the run. Kept beside
// the acquisition table, not in the camera object, so that a status poll
// can read it while another thread detaches the camera.
std::atomic<bool>& LiveRunDiedFlag(int32_t number);

}  // namespace tavro::camera
