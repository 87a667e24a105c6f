// One opened camera: its camera API objects, what the plug-in knows of the
// camera's state (acquisition, pixel format, geometry, trigger mode, scaling
// of the host's parameters), where the next frame goes in the host's image,
// and the worker thread that serves live acquisition.
//
// The operations are spread by concern: construction, the worker and Stop
// here; start and triggers, delivery and live display in src/camera; AOI and
// pixel formats in src/geometry; the feature families in src/parameters.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "camera/frame_ledger.h"
#include "geometry/aoi.h"
#include "geometry/format_list.h"
#include "platform/event.h"

namespace oxel::core {
class Buffer;
class DataStream;
class Device;
class DeviceDescriptor;
class NodeMap;
}  // namespace oxel::core

namespace tavro::camera {

// Called after each delivered frame, on the thread that delivered it.
using FrameCallback = void (*)(void* argument);

// Where frames go in the host's image. Written by the calling thread only
// while the worker is idle; read by whichever thread delivers.
struct Destination {
  int32_t width = 0;  // of the primary (grey) plane
  int32_t height = 0;
  int32_t pitch = 0;  // bytes; every plane advances by it
  bool colour = false;
  uint8_t* grey = nullptr;  // first byte of the first row to fill
  uint8_t* red = nullptr;   // colour planes: null unless `colour`
  uint8_t* green = nullptr;
  uint8_t* blue = nullptr;
  int32_t copyLimitWidth = 0;  // the camera's maximum image size
  int32_t copyLimitHeight = 0;
  bool sourceIsBgr = false;  // frames arrive as "BGR8", else 1 byte per pixel
};

// The buffer being delivered; valid until the next frame.
struct FrameInHand {
  void* base = nullptr;
  uint64_t size = 0;
  int32_t width = 0;
  int32_t height = 0;
  int32_t bytesPerLine = 0;
  int32_t bitsPerPixel = 0;
};

// Values of AcquireWorker::pendingRequest.
inline constexpr int32_t kRequestNone = 0;
inline constexpr int32_t kRequestLive = 2;

// Values of AcquireWorker::workerState. The worker says so while it waits for
// the first frame of a live run too, so that Stop never returns while the
// worker may still write into the host's image or call the frame callback.
inline constexpr int32_t kWorkerIdle = 0;
inline constexpr int32_t kWorkerFirstFrame = 1;
inline constexpr int32_t kWorkerRunning = 2;

// Everything the calling thread and the worker share. The flags are atomic
// so that each side sees the other's writes; the events carry the wake-up
// and the end of the thread.
struct AcquireWorker {
  std::atomic<int32_t> pendingRequest{kRequestNone};
  std::atomic<int32_t> workerState{kWorkerIdle};
  std::atomic<bool> threadRunning{false};
  std::atomic<bool> keepRunning{false};
  // Raised when the live loop ends by itself (a refused trigger, a frame
  // that failed or never came) while live was still wanted. Borrowed: the
  // flag of the camera's number, which outlives the camera object; set
  // while the worker is idle.
  std::atomic<bool>* liveDied = nullptr;
  // Live frames that came torn and were skipped.
  std::atomic<uint64_t> skippedFrames{0};
  platform::AutoResetEvent wakeEvent;
  platform::AutoResetEvent threadExitEvent;
  // Set each time the worker becomes idle, so that Stop wakes at once
  // rather than on a polling interval.
  platform::AutoResetEvent idleEvent;
  // Borrowed: the camera's acquisition entry's event, set after each live
  // frame. Written while the worker is idle.
  platform::ManualResetEvent* frameDoneEvent = nullptr;
  std::thread thread;
};

class OxelCamera {
 public:
  OxelCamera();
  ~OxelCamera();
  OxelCamera(const OxelCamera&) = delete;
  OxelCamera& operator=(const OxelCamera&) = delete;

  // ---- start, triggers, responsiveness ----
  // Arms the camera for a request: starts it when it is at rest, and in
  // either case leaves no finished frame waiting, so that the next frame
  // taken is one triggered after this call. A start that fails half-way is
  // undone.
  bool Start();
  // Takes every finished frame waiting in the data stream and queues it
  // again, undelivered; the next frame taken is then one triggered after
  // this call.
  void ReturnFinishedFrames();
  bool ArmSoftwareTrigger();
  bool ArmHardwareTrigger();
  bool FireSoftwareTrigger();
  bool IsResponding();
  // Hands the live loop to the worker: software trigger, camera started.
  bool StartLive();
  // Brings the camera to rest: ends a live loop, aborts and stops the
  // acquisition, unlocks the transport parameters. Each of the three steps
  // is tried even when one before it fails. False when the worker is still
  // inside its loop after 5 seconds; the worker finishes the frame in
  // progress first, within its frame time-out.
  bool Stop();

  // ---- frame delivery ----
  // 0 success, 64 timeout, 16 any other failure (an incomplete frame too).
  // Frames owed to earlier requests are skipped within the same time limit.
  uint32_t WaitAndDeliver(uint32_t timeoutMs);
  // The two halves of WaitAndDeliver. TakeFrame answers this request's
  // frame, or no buffer with the mask set (and `incomplete` when the frame
  // came torn: it is already back in the stream); DeliverTaken writes a
  // frame into the host's planes and queues it again.
  struct Taken {
    std::shared_ptr<oxel::core::Buffer> buffer;
    uint32_t mask = 0;
    bool incomplete = false;
  };
  Taken TakeFrame(uint32_t timeoutMs);
  uint32_t DeliverTaken(const std::shared_ptr<oxel::core::Buffer>& buffer);
  // False only when no destination is bound.
  bool DeliverFrame();

  // ---- sensor size and AOI ----
  int32_t ReadWidthMax();
  int32_t ReadHeightMax();
  void ReadAoiLimits();
  std::string AoiLimitsText() const;
  void PrintAoiLimits() const;
  bool SetAoi(geometry::AoiRect& rect);
  bool ApplyRequestedAoi(geometry::AoiRect rect);
  bool ApplyFullAoi();

  // ---- pixel formats ----
  bool SupportsBgr8();
  bool SetBgr8();
  bool SetMono8();
  void BuildFormatList();
  std::string AllFormatsText() const;
  void PrintFormats() const;

  // ---- exposure, frame rate, pixel clock ----
  double GetExposure();
  bool IsExposureSupported();
  void GetExposureRange(double& minimum, double& maximum, double& defaultValue, double& increment);
  bool SetExposure(double exposure);
  void SetFrameRate(double framesPerSecond);
  bool IsPixelClockSupported() const { return false; }
  // Not adjustable on these cameras: accepts anything and writes nothing.
  bool SetPixelClock(double) { return true; }

  // ---- gain and black level ----
  bool SetGainSelector(const std::string& entry);
  bool DiscoverGain();
  int32_t GetGain();
  bool SetGain(int32_t percent);
  int32_t GetGainDefault();
  bool DiscoverBlackLevel();
  int32_t GetBlackLevel();
  bool SetBlackLevel(int32_t level);
  int32_t GetBlackLevelDefault();

  // ---- link throughput limit ----
  bool DiscoverThroughputLimit();
  int32_t GetThroughputLimit();
  bool SetThroughputLimit(int32_t percent);

  // ---- trigger and strobe ----
  bool SetTriggerMode(int32_t mode, bool force);
  // No strobe output is offered through this plug-in.
  bool EnableStrobe(bool, int32_t, int32_t) { return false; }

  // ---- parameters these cameras do not offer through the plug-in ----
  bool IsSharpnessSupported() const { return false; }
  bool SetSharpness(double) { return false; }
  bool IsGammaSupported() const { return false; }
  bool SetGamma(double) { return false; }
  bool IsFocusSupported() const { return false; }
  bool SetFocus(int32_t) { return false; }
  bool IsZoomSupported() const { return false; }
  bool SetZoom(int32_t) { return false; }

  // ---- state ----
  std::shared_ptr<oxel::core::DeviceDescriptor> descriptor;
  std::shared_ptr<oxel::core::Device> device;
  std::shared_ptr<oxel::core::NodeMap> nodeMap;
  std::shared_ptr<oxel::core::DataStream> dataStream;
  std::string cameraKey;
  uint64_t payloadSize = 0;
  bool acquisitionStarted = false;
  // A stop or an undone start left a step undone (the camera refused it):
  // the next Stop or Start tries the steps again.
  bool restPending = false;
  std::string pixelFormatName;
  double gainMinimum = 0.0;
  double gainRange = 0.0;
  double blackLevelMinimum = 0.0;
  double blackLevelRange = 0.0;
  int64_t throughputMinimum = 0;
  int64_t throughputRange = 0;
  int64_t throughputIncrement = 0;
  bool isColour = false;
  int32_t bitsPerPixel = 0;
  int32_t widthMax = 0;
  int32_t heightMax = 0;
  FrameInHand frame;
  // Used by whichever thread triggers and delivers: the calling thread, or
  // the worker during live acquisition.
  FrameLedger ledger;
  geometry::FormatList formats;
  std::optional<geometry::AoiLimits> aoiLimits;
  // The rectangle last written in full; empty before the first and after a
  // write the camera refused part of, so that the next request writes again.
  std::optional<geometry::AoiRect> currentAoi;
  FrameCallback frameCallback = nullptr;
  void* frameCallbackArg = nullptr;
  Destination destination;
  AcquireWorker worker;
  int32_t triggerMode = 0;

 private:
  static void AcquireThread(OxelCamera* camera);
  void RunLiveLoop();
  // Fires the live run's next trigger, unless the run was stopped.
  bool NextLiveTrigger();
  // The camera has an empty buffer to fill while the plug-in holds one.
  bool HasQueuedBuffer();
  // Queues the buffer again; false when it is lost to the stream.
  bool GiveBack(const std::shared_ptr<oxel::core::Buffer>& buffer);
  // The camera side of a stop; each step on its own. True when every step
  // asked for succeeded.
  bool RestSteps(bool abort, bool stopStream, bool unlock);
  void ReleaseDataStream();
};

}  // namespace tavro::camera
