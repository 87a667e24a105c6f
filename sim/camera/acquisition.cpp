#include "camera/acquisition.h"

#include <chrono>

#include "oxel_sim.h"

namespace oxelsim {

namespace {

constexpr const char* kFrameTriggers[] = {"FrameStart", "ExposureStart"};

uint64_t NowNs() {
  return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                   std::chrono::steady_clock::now().time_since_epoch())
                                   .count());
}

}  // namespace

Acquisition::Acquisition(CameraFeatures& features, std::mutex& mutex)
    : features_(features), mutex_(mutex), nextFrameId_(OXEL_SIM_FIRST_FRAME_ID) {}

Acquisition::~Acquisition() {
  {
    std::lock_guard lock(mutex_);
    quit_ = true;
    wake_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
}

void Acquisition::Reset() {
  Stop();
  nextFrameId_ = OXEL_SIM_FIRST_FRAME_ID;
  lastFrameId_.reset();
  dropCount_ = 0;
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

void Acquisition::AttachStream(BufferPool* pool) {
  pool_ = pool;
  SettingsChanged();
}

void Acquisition::DetachStream(const BufferPool* pool) {
  if (pool_ != pool) return;
  pool_ = nullptr;
  SettingsChanged();
}

void Acquisition::SettingsChanged() {
  ++settingsVersion_;
  if (FreeRunning() && !thread_.joinable()) thread_ = std::thread([this] { FreeRun(); });
  wake_.notify_all();
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
  if (Producing() && AcceptsTrigger("Software", true)) ProduceFrame();
}

void Acquisition::LineEdge(bool rising) {
  if (Producing() && AcceptsTrigger("Line0", rising)) ProduceFrame();
}

void Acquisition::ProduceFrame() {
  const uint64_t frameId = nextFrameId_++;
  if (dropCount_ != 0) {
    if (dropCount_ > 0) --dropCount_;
    return;
  }
  std::shared_ptr<SimBuffer> buffer = pool_->TakeQueued();
  if (!buffer) return;
  FrameGeometry geometry;
  geometry.width = static_cast<uint32_t>(features_.IntegerOr("Width", 0));
  geometry.height = static_cast<uint32_t>(features_.IntegerOr("Height", 0));
  geometry.offsetX = static_cast<uint32_t>(features_.IntegerOr("OffsetX", 0));
  geometry.offsetY = static_cast<uint32_t>(features_.IntegerOr("OffsetY", 0));
  const uint64_t format = features_.PixelFormat();
  geometry.bytesPerPixel = static_cast<uint32_t>(BytesPerPixel(format));
  const size_t written = pattern_.Fill(geometry, frameId, buffer->Base(), buffer->Size());
  buffer->hasFrame = true;
  buffer->incomplete = written < static_cast<size_t>(features_.PayloadSize());
  buffer->width = geometry.width;
  buffer->height = geometry.height;
  buffer->xOffset = geometry.offsetX;
  buffer->yOffset = geometry.offsetY;
  buffer->pixelFormat = format;
  buffer->frameId = frameId;
  buffer->timestampNs = NowNs();
  pool_->Deliver(buffer);
  lastFrameId_ = frameId;
  if (features_.TextOr("AcquisitionMode", "Continuous") == "SingleFrame") Stop();
}

void Acquisition::FreeRun() {
  std::unique_lock lock(mutex_);
  auto next = std::chrono::steady_clock::now();
  while (!quit_) {
    if (!FreeRunning()) {
      wake_.wait(lock);
      next = std::chrono::steady_clock::now();
      continue;
    }
    const uint64_t seen = settingsVersion_;
    const bool woken =
        wake_.wait_until(lock, next, [&] { return quit_ || settingsVersion_ != seen; });
    if (woken) continue;
    ProduceFrame();
    const auto period = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(1.0 / features_.FrameRate()));
    next += period;
    const auto now = std::chrono::steady_clock::now();
    if (next < now) next = now;
  }
}

}  // namespace oxelsim
