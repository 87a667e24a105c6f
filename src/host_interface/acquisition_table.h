// The module's table of acquisitions in progress: one entry per camera
// number, beside the host's records. Only the host's calling threads write
// it; a camera's worker only sets the entry's event after each live frame.
// An entry is another thread's to read only through yAcquiring (a status
// poll beside a wait, a stop of the live run from another camera's call).
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/event.h"
#include "tavro/tavro_host.h"

namespace tavro::host_interface {

inline constexpr int32_t kMaxCameras = TAVRO_MAX_CAMERAS;

// An open event, or null when closed (before the first setup, after
// teardown). Pointer-sized, like the handle it stands for; resetting it
// closes the event.
using EventHandle = std::unique_ptr<platform::ManualResetEvent>;
static_assert(sizeof(EventHandle) == sizeof(void*));

struct TavroCamAcq {
  SystemRecord* ptSystem = nullptr;  // the record given to the last setup
  uint32_t yColour = 0;
  CamImage* ptCamImage = nullptr;  // the acquisition in progress or last started
  uint32_t iUserValue = 0;         // handed back to pfnAcqFinished
  int32_t iWidthMax = 0;
  int32_t iHeightMax = 0;
  // From the start of an acquisition until its end is reported.
  std::atomic<uint32_t> yAcquiring{0};
  uint32_t yHwTrigger = 0;
  // Manual reset: reset when an acquisition starts and after a successful
  // wait, set after each live frame.
  EventHandle hEvent;
};

// Entry n belongs to camera number n.
extern std::array<TavroCamAcq, kMaxCameras> tTavroCamAcq;

}  // namespace tavro::host_interface
