#include "camera/acquisition.h"

#include <algorithm>

#include "oxel_sim.h"

namespace oxelsim {

namespace {

constexpr const char* kFrameTriggers[] = {"FrameStart", "ExposureStart"};

// An armed fault count: true when it applies to this frame (-1 applies to
// every frame until cleared).
bool TakeCount(int32_t& count) {
  if (count == 0) return false;
  if (count > 0) --count;
  return true;
}

Acquisition::Clock::duration Seconds(double seconds) {
  return std::chrono::duration_cast<Acquisition::Clock::duration>(
      std::chrono::duration<double>(seconds));
}

uint64_t Nanoseconds(Acquisition::Clock::time_point time) {
  return static_cast<uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count());
}

}  // namespace

Acquisition::Acquisition(CameraFeatures& features, std::mutex& mutex, bool instantFrames)
    : features_(features),
      mutex_(mutex),
      instantFrames_(instantFrames),
      nextFrameId_(OXEL_SIM_FIRST_FRAME_ID) {}

Acquisition::~Acquisition() {
  {
    std::lock_guard lock(mutex_);
    quit_ = true;
    wake_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
}

void Acquisition::Reset() {
  Abort();
  inFlight_.clear();
  nextFrameId_ = OXEL_SIM_FIRST_FRAME_ID;
  lastFrameId_.reset();
  ignoredTriggers_ = 0;
  incompleteSent_ = 0;
  dropCount_ = 0;
  delayCount_ = 0;
  delayMs_ = 0;
  incompleteCount_ = 0;
  failStartCount_ = 0;
  failStartCode_ = OXEL_RETURN_CODE_SUCCESS;
}

void Acquisition::Start() {
  active_ = true;
  features_.SetAcquisitionActive(true);
  SettingsChanged();
}

void Acquisition::Stop() {
  active_ = false;
  features_.SetAcquisitionActive(false);
  SettingsChanged();
}

void Acquisition::Abort() {
  Stop();
  DiscardUnfinished(Clock::now());
}

void Acquisition::Unplug() {
  Abort();
  if (pool_ != nullptr) {
    inFlight_.clear();
    pool_->Lose();
  }
}

void Acquisition::DiscardUnfinished(Clock::time_point now) {
  std::erase_if(inFlight_, [&](const Frame& frame) { return frame.readOutEnd > now; });
  busyUntil_ = std::min(busyUntil_, now);
}

void Acquisition::AttachStream(BufferPool* pool) {
  inFlight_.clear();  // what travelled to another stream does not arrive here
  pool_ = pool;
  SettingsChanged();
}

void Acquisition::DetachStream(const BufferPool* pool) {
  if (pool_ != pool) return;
  pool_ = nullptr;
  inFlight_.clear();
  SettingsChanged();
}

void Acquisition::StreamStopped(const BufferPool* pool) {
  if (pool_ == pool) inFlight_.clear();
  SettingsChanged();
}

void Acquisition::SettingsChanged() {
  if (FreeRunning()) EnsureThread();
  wake_.notify_all();
}

void Acquisition::DelayFrames(int32_t count, uint32_t delayMs) {
  delayCount_ = count;
  delayMs_ = delayMs;
}

void Acquisition::FailStreamStarts(int32_t count, OXEL_RETURN_CODE code) {
  failStartCount_ = count;
  failStartCode_ = code;
}

OXEL_RETURN_CODE Acquisition::TakeStreamStartFault() {
  return TakeCount(failStartCount_) ? failStartCode_ : OXEL_RETURN_CODE_SUCCESS;
}

bool Acquisition::Producing() const {
  return active_ && pool_ != nullptr && pool_->Grabbing();
}

bool Acquisition::FreeRunning() const {
  if (!Producing()) return false;
  for (const char* selector : kFrameTriggers) {
    if (features_.EnumFor("TriggerMode", selector) == "On") return false;
  }
  return true;
}

bool Acquisition::AcceptsTrigger(const char* source, bool rising) const {
  for (const char* selector : kFrameTriggers) {
    if (features_.EnumFor("TriggerMode", selector) != "On") continue;
    if (features_.EnumFor("TriggerSource", selector) != source) continue;
    const std::string activation = features_.EnumFor("TriggerActivation", selector);
    const bool edgeMatches = activation == (rising ? "RisingEdge" : "FallingEdge");
    if (std::string(source) == "Software" || edgeMatches) return true;
  }
  return false;
}

void Acquisition::SoftwareTrigger() {
  if (Producing() && AcceptsTrigger("Software", true)) Trigger();
}

void Acquisition::LineEdge(bool rising) {
  if (Producing() && AcceptsTrigger("Line0", rising)) Trigger();
}

void Acquisition::Trigger() {
  const Clock::time_point now = Clock::now();
  if (now < busyUntil_) {
    ++ignoredTriggers_;  // no trigger overlap: still exposing or reading out
    return;
  }
  BeginFrame(now);
}

void Acquisition::BeginFrame(Clock::time_point start) {
  Frame frame;
  frame.id = nextFrameId_++;
  frame.exposureStart = start;
  frame.readOutEnd = start;
  if (!instantFrames_) {
    frame.readOutEnd +=
        Seconds(features_.FloatOr("ExposureTime", 0.0) / 1e6 + features_.ReadOutSeconds());
  }
  busyUntil_ = frame.readOutEnd;
  if (features_.TextOr("AcquisitionMode", "Continuous") == "SingleFrame") Stop();
  if (TakeCount(dropCount_)) return;  // takes its ID, never arrives

  frame.arrival = frame.readOutEnd;
  if (TakeCount(delayCount_)) frame.arrival += std::chrono::milliseconds(delayMs_);
  frame.incomplete = TakeCount(incompleteCount_);
  if (incompletePeriod_ > 0 && --framesToIncomplete_ == 0) {
    framesToIncomplete_ = incompletePeriod_;
    frame.incomplete = true;
  }
  frame.geometry.width = static_cast<uint32_t>(features_.IntegerOr("Width", 0));
  frame.geometry.height = static_cast<uint32_t>(features_.IntegerOr("Height", 0));
  frame.geometry.offsetX = static_cast<uint32_t>(features_.IntegerOr("OffsetX", 0));
  frame.geometry.offsetY = static_cast<uint32_t>(features_.IntegerOr("OffsetY", 0));
  frame.pixelFormat = features_.PixelFormat();
  frame.geometry.bytesPerPixel = static_cast<uint32_t>(BytesPerPixel(frame.pixelFormat));
  frame.payload = static_cast<size_t>(features_.PayloadSize());

  if (frame.arrival <= start) {
    Deliver(frame);
    return;
  }
  const auto later = std::upper_bound(
      inFlight_.begin(), inFlight_.end(), frame.arrival,
      [](Clock::time_point arrival, const Frame& other) { return arrival < other.arrival; });
  inFlight_.insert(later, frame);
  EnsureThread();
  wake_.notify_all();
}

void Acquisition::Deliver(const Frame& frame) {
  if (pool_ == nullptr || !pool_->Grabbing()) return;
  std::shared_ptr<PoolBuffer> buffer = pool_->TakeQueued();
  if (!buffer) return;
  // An incomplete frame lost its second half on the way.
  const size_t room =
      frame.incomplete ? std::min(buffer->Size(), frame.payload / 2) : buffer->Size();
  const size_t written = pattern_.Fill(frame.geometry, frame.id, buffer->Base(), room);
  buffer->hasFrame = true;
  buffer->incomplete = written < frame.payload;
  if (buffer->incomplete) ++incompleteSent_;
  buffer->width = frame.geometry.width;
  buffer->height = frame.geometry.height;
  buffer->xOffset = frame.geometry.offsetX;
  buffer->yOffset = frame.geometry.offsetY;
  buffer->pixelFormat = frame.pixelFormat;
  buffer->frameId = frame.id;
  buffer->timestampNs = Nanoseconds(frame.exposureStart);
  pool_->Deliver(buffer);
  lastFrameId_ = frame.id;
}

void Acquisition::EnsureThread() {
  if (!thread_.joinable()) thread_ = std::thread([this] { Run(); });
}

void Acquisition::Run() {
  std::unique_lock lock(mutex_);
  while (!quit_) {
    Clock::time_point now = Clock::now();
    while (!inFlight_.empty() && inFlight_.front().arrival <= now) {
      const Frame frame = inFlight_.front();
      inFlight_.erase(inFlight_.begin());
      Deliver(frame);
    }
    if (FreeRunning()) {
      if (!nextFreeRunStart_) nextFreeRunStart_ = now;
      if (*nextFreeRunStart_ <= now) {
        // The frame rate's maximum allows for exposure and read-out, so the
        // next exposure may overlap this frame's read-out. Frames start on
        // the rate's schedule, however late this thread wakes.
        BeginFrame(*nextFreeRunStart_);
        *nextFreeRunStart_ += Seconds(1.0 / features_.FrameRate());
        if (*nextFreeRunStart_ < now) nextFreeRunStart_ = now;
        continue;
      }
    } else {
      nextFreeRunStart_.reset();
    }
    std::optional<Clock::time_point> next = nextFreeRunStart_;
    if (!inFlight_.empty() && (!next || inFlight_.front().arrival < *next)) {
      next = inFlight_.front().arrival;
    }
    if (next) {
      wake_.wait_until(lock, *next);
    } else {
      wake_.wait(lock);
    }
  }
}

}  // namespace oxelsim
