#include "transport/data_stream.h"

#include <chrono>

#include "core/gerror.h"
#include "transport/device.h"

namespace oxelarv {

namespace {

// How long the pump waits for Aravis at a time: the latest a stopping pump
// notices.
constexpr guint64 kPumpSliceUs = 20000;

// Aravis's statuses of a buffer it gives back: only SUCCESS is a whole frame.
bool Complete(ArvBuffer* buffer) {
  return arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
}

}  // namespace

DataStream::DataStream(GRef<ArvDevice> device, std::string cameraId,
                       std::weak_ptr<DataStreamDescriptor> origin)
    : device_(std::move(device)),
      cameraId_(std::move(cameraId)),
      origin_(std::move(origin)),
      pool_("data stream 'Stream0' of camera '" + cameraId_ + "'", mutex_) {}

std::shared_ptr<DataStream> DataStream::Open(GRef<ArvDevice> device, std::string cameraId,
                                             std::weak_ptr<DataStreamDescriptor> origin) {
  std::shared_ptr<DataStream> stream(
      new DataStream(std::move(device), std::move(cameraId), std::move(origin)));
  GError* error = nullptr;
  stream->stream_ =
      GRef<ArvStream>(arv_device_create_stream(stream->device_.get(), nullptr, nullptr, &error));
  if (!stream->stream_) {
    FailOnError(error, OXEL_RETURN_CODE_ERROR,
                "the data stream of camera '" + stream->cameraId_ + "' cannot be opened");
    Fail(OXEL_RETURN_CODE_ERROR, std::string(CurrentFunction()) + ": the data stream of camera '" +
                                     stream->cameraId_ + "' cannot be opened");
  }
  stream->pump_ = std::thread([raw = stream.get()] { raw->Pump(); });
  Library::Instance().handles.Add(stream.get(), Kind::DataStream, stream, stream.get(),
                                  static_cast<Module*>(stream.get()));
  return stream;
}

DataStream::~DataStream() {
  stopPump_ = true;
  if (pump_.joinable()) pump_.join();
  if (stream_ && !aravisThreadRunning_) {
    // Aravis stops its thread when the stream goes, and complains if it is
    // stopped already.
    arv_stream_start_thread(stream_.get());
  }
}

size_t DataStream::PayloadSize() const {
  GError* error = nullptr;
  ArvDevice* device = device_.get();
  const auto current = arv_device_get_integer_feature_value(device, "PayloadSize", &error);
  FailOnError(error, OXEL_RETURN_CODE_ERROR, "PayloadSize of camera '" + cameraId_ + "'");
  // Cameras without WidthMax/HeightMax or pixel formats keep their current payload.
  const gint64 width = arv_device_get_integer_feature_value(device, "WidthMax", &error);
  g_clear_error(&error);
  const gint64 height = arv_device_get_integer_feature_value(device, "HeightMax", &error);
  g_clear_error(&error);
  guint count = 0;
  gint64* formats =
      arv_device_dup_available_enumeration_feature_values(device, "PixelFormat", &count, &error);
  g_clear_error(&error);
  guint64 widestBits = 8;
  for (guint i = 0; i < count; ++i) {
    widestBits = std::max<guint64>(widestBits, ARV_PIXEL_FORMAT_BIT_PER_PIXEL(formats[i]));
  }
  g_free(formats);
  const guint64 largest =
      width > 0 && height > 0 ? guint64(width) * guint64(height) * widestBits / 8 : 0;
  return static_cast<size_t>(std::max<guint64>(guint64(std::max<gint64>(current, 0)), largest));
}

bool DataStream::Grabbing() {
  std::lock_guard lock(mutex_);
  return pool_.Grabbing();
}

size_t DataStream::AnnouncedCount() {
  std::lock_guard lock(mutex_);
  return pool_.AnnouncedCount();
}

size_t DataStream::QueuedCount() {
  std::lock_guard lock(mutex_);
  // Buffers with Aravis are still waiting to be filled.
  return pool_.QueuedCount() + atAravis_.size();
}

size_t DataStream::AwaitingDeliveryCount() {
  std::lock_guard lock(mutex_);
  return pool_.AwaitingDeliveryCount();
}

uint64_t DataStream::DeliveredCount() {
  std::lock_guard lock(mutex_);
  return pool_.DeliveredCount();
}

uint64_t DataStream::UnderrunCount() {
  guint64 completed = 0;
  guint64 failures = 0;
  guint64 underruns = 0;
  arv_stream_get_statistics(stream_.get(), &completed, &failures, &underruns);
  return underruns;
}

std::shared_ptr<PoolBuffer> DataStream::AllocAndAnnounce(size_t size, void* userPtr) {
  std::shared_ptr<PoolBuffer> buffer;
  {
    std::lock_guard lock(mutex_);
    buffer = pool_.Announce(size, userPtr);
    // Aravis fills the pool buffer's own memory: the frame is never copied.
    GRef<ArvBuffer> wrapper(arv_buffer_new(size, buffer->Base()));
    byAravisBuffer_[wrapper.get()] = buffer;
    aravisBuffers_[buffer.get()] = std::move(wrapper);
  }
  Library::Instance().handles.Add(buffer.get(), Kind::Buffer, buffer, buffer.get(),
                                  static_cast<Module*>(&BufferModule::Instance()));
  return buffer;
}

void* DataStream::Revoke(const std::shared_ptr<PoolBuffer>& buffer) {
  void* userPtr = nullptr;
  {
    std::lock_guard lock(mutex_);
    for (const auto& held : atAravis_) {
      if (held == buffer) {
        Fail(OXEL_RETURN_CODE_BAD_ACCESS,
             std::string(CurrentFunction()) + ": buffer " + HandleText(buffer.get()) +
                 " is being filled while the stream is acquiring; stop the acquisition first (" +
                 pool_.Name() + ")");
      }
    }
    userPtr = pool_.Revoke(buffer);
    auto wrapper = aravisBuffers_.find(buffer.get());
    if (wrapper != aravisBuffers_.end()) {
      byAravisBuffer_.erase(wrapper->second.get());
      aravisBuffers_.erase(wrapper);
    }
  }
  Library::Instance().handles.Remove(buffer.get());
  return userPtr;
}

void DataStream::HandToAravisLocked(const std::shared_ptr<PoolBuffer>& buffer) {
  ArvBuffer* wrapper = aravisBuffers_.at(buffer.get()).get();
  atAravis_.push_back(buffer);
  TestPicture::HandOverBuffer();
  // Aravis takes a reference of its own.
  arv_stream_push_buffer(stream_.get(), ARV_BUFFER(g_object_ref(wrapper)));
}

void DataStream::Queue(const std::shared_ptr<PoolBuffer>& buffer) {
  std::lock_guard lock(mutex_);
  pool_.Queue(buffer);
  if (pool_.Grabbing()) HandToAravisLocked(pool_.TakeQueued());
}

std::shared_ptr<PoolBuffer> DataStream::Wait(uint64_t timeoutMs) {
  std::unique_lock lock(mutex_);
  std::shared_ptr<PoolBuffer> buffer = pool_.Wait(lock, timeoutMs);
  if (!buffer) {
    Fail(OXEL_RETURN_CODE_ERROR,
         std::string(CurrentFunction()) + ": camera '" + cameraId_ + "' was lost during the wait");
  }
  return buffer;
}

void DataStream::KillWait() {
  std::lock_guard lock(mutex_);
  pool_.KillWait();
}

void DataStream::Start(OXEL_ACQUISITION_START_MODE mode, uint64_t count) {
  if (mode != OXEL_ACQUISITION_START_MODE_DEFAULT) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": start mode " +
                                                std::to_string(mode) +
                                                " (only 0, the default, is known)");
  }
  std::lock_guard lock(mutex_);
  if (lost_) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": camera '" + cameraId_ + "' was lost");
  }
  if (pool_.AnnouncedCount() < MinBufferCount()) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": " + std::to_string(pool_.AnnouncedCount()) +
             " buffers announced on " + pool_.Name() + ", at least " +
             std::to_string(MinBufferCount()) + " are required");
  }
  pool_.Start(count);
  if (!aravisThreadRunning_) {
    arv_stream_start_thread(stream_.get());
    aravisThreadRunning_ = true;
  }
  while (pool_.QueuedCount() > 0) HandToAravisLocked(pool_.TakeQueued());
}

void DataStream::TakeBackFromAravisLocked() {
  if (aravisThreadRunning_) {
    // Drops Aravis's references to the buffers it holds; ours keep them.
    arv_stream_stop_thread(stream_.get(), TRUE);
    aravisThreadRunning_ = false;
  }
  pool_.ReturnUnfilled(atAravis_);
  atAravis_.clear();
}

void DataStream::Stop(OXEL_ACQUISITION_STOP_MODE mode) {
  if (mode != OXEL_ACQUISITION_STOP_MODE_DEFAULT && mode != OXEL_ACQUISITION_STOP_MODE_KILL) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": stop mode " +
                                                std::to_string(mode) + " (0 default or 1 kill)");
  }
  std::lock_guard lock(mutex_);
  pool_.Stop();
  TakeBackFromAravisLocked();
}

void DataStream::Flush(OXEL_DATA_STREAM_FLUSH_MODE mode) {
  std::lock_guard lock(mutex_);
  pool_.Flush(mode);
}

void DataStream::Lose() {
  std::lock_guard lock(mutex_);
  lost_ = true;
  pool_.Lose();
}

void DataStream::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  std::vector<std::shared_ptr<PoolBuffer>> buffers;
  {
    std::lock_guard lock(mutex_);
    pool_.Close();
    TakeBackFromAravisLocked();
    buffers = pool_.Announced();
  }
  stopPump_ = true;
  if (pump_.joinable()) pump_.join();
  HandleRegistry& handles = Library::Instance().handles;
  for (const auto& buffer : buffers) handles.Remove(buffer.get());
  handles.Remove(this);
  if (auto origin = origin_.lock()) origin->StreamClosedLocked();
}

void DataStream::Pump() {
  while (!stopPump_) {
    ArvBuffer* finished = arv_stream_timeout_pop_buffer(stream_.get(), kPumpSliceUs);
    if (finished == nullptr) continue;
    GRef<ArvBuffer> popped(finished);  // the reference Aravis gave back
    TestPicture::SeeDrawnFrames();
    std::lock_guard lock(mutex_);
    auto found = byAravisBuffer_.find(finished);
    if (found == byAravisBuffer_.end()) continue;
    std::shared_ptr<PoolBuffer> buffer = found->second;
    auto held = std::find(atAravis_.begin(), atAravis_.end(), buffer);
    // Taken back by a stop while this one was on its way out: it is queued
    // again and its frame is dropped, as a stop drops a frame in flight.
    if (held == atAravis_.end()) continue;
    atAravis_.erase(held);
    if (arv_buffer_get_frame_id(finished) == TestPicture::kUntriggered) {
      // A fake camera's frame that no trigger asked for: never seen.
      if (pool_.Grabbing()) {
        HandToAravisLocked(buffer);
      } else {
        pool_.ReturnUnfilled({buffer});
      }
      continue;
    }
    buffer->hasFrame = true;
    buffer->incomplete = !Complete(finished);
    buffer->width = static_cast<size_t>(std::max(0, arv_buffer_get_image_width(finished)));
    buffer->height = static_cast<size_t>(std::max(0, arv_buffer_get_image_height(finished)));
    buffer->xOffset = static_cast<size_t>(std::max(0, arv_buffer_get_image_x(finished)));
    buffer->yOffset = static_cast<size_t>(std::max(0, arv_buffer_get_image_y(finished)));
    buffer->pixelFormat = arv_buffer_get_image_pixel_format(finished);
    buffer->frameId = ids_.Next(arv_buffer_get_frame_id(finished));
    buffer->timestampNs = arv_buffer_get_timestamp(finished);
    pool_.Deliver(buffer);
  }
}

}  // namespace oxelarv
