// Fetching a finished buffer and writing it into the host's planes.
#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <stdexcept>

#include "camera/live_delivery.h"
#include "camera/live_display_callback.h"
#include "camera/oxel_camera.h"
#include "camera/pixel_conversion.h"
#include "oxel/core/buffer.h"
#include "oxel/core/data_stream.h"
#include "oxel/core/exceptions.h"

namespace tavro::camera {
namespace {

constexpr uint32_t kMaskTimeout = 64;
constexpr uint32_t kMaskFailure = 16;
int32_t As32Bit(size_t value) {
  return static_cast<int32_t>(std::min<size_t>(value, INT32_MAX));
}

}  // namespace

uint32_t OxelCamera::WaitAndDeliver(uint32_t timeoutMs) {
  const Taken taken = TakeFrame(timeoutMs);
  return taken.buffer ? DeliverTaken(taken.buffer) : taken.mask;
}

OxelCamera::Taken OxelCamera::TakeFrame(uint32_t timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  bool skipped = false;
  Taken taken;
  for (;;) {
    std::shared_ptr<oxel::core::Buffer> buffer;
    try {
      if (!dataStream) throw std::runtime_error("Camera has no data stream");
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      buffer = dataStream->WaitForFinishedBuffer(
          static_cast<uint64_t>(std::max<int64_t>(0, left.count())));
      const std::optional<uint64_t> id = FrameIdOf(*buffer);
      if (id && ledger.IsStale(*id)) {
        // A frame an earlier request gave up on: back to the stream, and
        // the wait goes on for this request's own.
        ledger.Passed(*id);
        skipped = true;
      } else {
        if (id) ledger.Taken(*id);
        // Part of a frame is not an image: the host's planes keep what they
        // held.
        if (!buffer->IsIncomplete()) {
          taken.buffer = buffer;
          return taken;
        }
        taken.mask = kMaskFailure;
        taken.incomplete = true;
      }
    } catch (const oxel::core::TimeoutException&) {
      taken.mask = kMaskTimeout;
      if (skipped) ledger.Forgive();
    } catch (const std::exception&) {
      taken.mask = kMaskFailure;
    }
    if (buffer && !GiveBack(buffer)) {
      taken.mask = kMaskFailure;
      taken.incomplete = false;
    }
    if (taken.mask != 0) return taken;
  }
}

uint32_t OxelCamera::DeliverTaken(const std::shared_ptr<oxel::core::Buffer>& buffer) {
  uint32_t mask = 0;
  try {
    frame.base = buffer->BasePtr();
    frame.size = buffer->Size();
    frame.width = As32Bit(buffer->Width());
    frame.height = As32Bit(buffer->Height());
    frame.bitsPerPixel = bitsPerPixel;
    frame.bytesPerLine = static_cast<int32_t>(
        std::min<int64_t>(int64_t{(bitsPerPixel + 7) / 8} * frame.width, INT32_MAX));
    DeliverFrame();
  } catch (const std::exception&) {
    mask = kMaskFailure;
  }
  if (!GiveBack(buffer)) mask = kMaskFailure;
  return mask;
}

bool OxelCamera::GiveBack(const std::shared_ptr<oxel::core::Buffer>& buffer) {
  try {
    dataStream->QueueBuffer(buffer);
  } catch (const oxel::core::TimeoutException&) {
    // A late time-out on the way back changes nothing for this frame.
  } catch (const std::exception&) {
    // The buffer is lost to the stream: reported like any other camera
    // failure, so that a live loop ends instead of starving.
    return false;
  }
  return true;
}

bool OxelCamera::HasQueuedBuffer() {
  try {
    return dataStream && dataStream->NumBuffersQueued() > 0;
  } catch (const std::exception&) {
    return false;
  }
}

bool OxelCamera::DeliverFrame() {
  if (destination.grey == nullptr) return false;
  const SourceFrame source{static_cast<const uint8_t*>(frame.base), frame.size, frame.width,
                           frame.height, destination.sourceIsBgr};
  const HostPlanes planes{destination.grey,  destination.red,   destination.green,
                          destination.blue,  destination.width, destination.height,
                          destination.pitch, destination.colour};
  const CopyRegion region =
      DeliveryRegion(source, planes, destination.copyLimitWidth, destination.copyLimitHeight);
  // A live frame is drawn in the delivery's pass where the display shows
  // the pixels being delivered; the result is that of the callback after it.
  LiveDisplaySource live;
  if (frameCallback == &LiveDisplayCallback && LiveDisplayOf(frameCallbackArg, &live)) {
    DeliverLiveFrame(source, planes, region, PlanLiveDisplay(live));
    ReportLiveFrame(frameCallbackArg);
    return true;
  }
  ConvertFrame(source, planes, region);
  if (frameCallback != nullptr) frameCallback(frameCallbackArg);
  return true;
}

}  // namespace tavro::camera
