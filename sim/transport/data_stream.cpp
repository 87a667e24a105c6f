#include "transport/data_stream.h"

#include "core/simulator.h"
#include "transport/device.h"
#include "transport/node_map.h"

namespace oxelsim {

DataStream::DataStream(std::shared_ptr<CameraSession> session,
                       std::weak_ptr<DataStreamDescriptor> origin)
    : session_(std::move(session)),
      origin_(std::move(origin)),
      pool_("data stream 'Stream0' of camera '" + session_->Camera().Id() + "'",
            session_->Camera().Mutex()) {
  info_ = MakeInfoNodeMap(pool_.Name(), {{"StreamID", "Stream0"}, {"StreamType", "U3V"}});
}

std::shared_ptr<DataStream> DataStream::Open(std::shared_ptr<CameraSession> session,
                                             std::weak_ptr<DataStreamDescriptor> origin) {
  std::shared_ptr<DataStream> stream(new DataStream(std::move(session), std::move(origin)));
  {
    std::lock_guard lock(stream->Camera().Mutex());
    stream->Camera().Frames().AttachStream(&stream->pool_);
  }
  Simulator::Instance().handles.Add(stream.get(), Kind::DataStream, stream, stream.get(),
                                    static_cast<Module*>(stream.get()));
  return stream;
}

DataStream::~DataStream() {
  // A stream dropped without a close must not stay attached to its camera.
  std::lock_guard lock(Camera().Mutex());
  Camera().Frames().DetachStream(&pool_);
}

std::shared_ptr<NodeMap> DataStream::NodeMapAt(size_t index) const {
  if (index != 0) {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node map index " +
                                            std::to_string(index) + " of a module with 1");
  }
  return info_;
}

size_t DataStream::MinBufferCount() const {
  return Camera().Description().minBufferCount;
}

bool DataStream::DefinesPayloadSize() const {
  return Camera().Description().definesPayloadSize;
}

size_t DataStream::PayloadSize() const {
  if (!DefinesPayloadSize()) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": " + pool_.Name() +
             " does not define the payload size; read the camera's PayloadSize feature");
  }
  std::lock_guard lock(Camera().Mutex());
  Camera().CheckAnswering(*session_);
  return static_cast<size_t>(Camera().Features().PayloadSize());
}

bool DataStream::Grabbing() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.Grabbing();
}

size_t DataStream::AnnouncedCount() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.AnnouncedCount();
}

size_t DataStream::QueuedCount() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.QueuedCount();
}

size_t DataStream::AwaitingDeliveryCount() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.AwaitingDeliveryCount();
}

uint64_t DataStream::DeliveredCount() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.DeliveredCount();
}

uint64_t DataStream::UnderrunCount() const {
  std::lock_guard lock(Camera().Mutex());
  return pool_.UnderrunCount();
}

std::shared_ptr<PoolBuffer> DataStream::AllocAndAnnounce(size_t size, void* userPtr) {
  std::shared_ptr<PoolBuffer> buffer;
  {
    std::lock_guard lock(Camera().Mutex());
    Camera().CheckAnswering(*session_);
    buffer = pool_.Announce(size, userPtr);
  }
  Simulator::Instance().handles.Add(buffer.get(), Kind::Buffer, buffer, buffer.get(),
                                    static_cast<Module*>(&BufferModule::Instance()));
  return buffer;
}

void* DataStream::Revoke(const std::shared_ptr<PoolBuffer>& buffer) {
  void* userPtr = nullptr;
  {
    std::lock_guard lock(Camera().Mutex());
    userPtr = pool_.Revoke(buffer);
  }
  Simulator::Instance().handles.Remove(buffer.get());
  return userPtr;
}

void DataStream::Queue(const std::shared_ptr<PoolBuffer>& buffer) {
  std::lock_guard lock(Camera().Mutex());
  Camera().CheckAnswering(*session_);
  pool_.Queue(buffer);
}

std::shared_ptr<PoolBuffer> DataStream::Wait(uint64_t timeoutMs) {
  std::unique_lock lock(Camera().Mutex());
  Camera().CheckAnswering(*session_);
  std::shared_ptr<PoolBuffer> buffer = pool_.Wait(lock, timeoutMs);
  if (!buffer) {
    Camera().CheckAnswering(*session_);  // names why the camera was lost
    Fail(OXEL_RETURN_CODE_ERROR, std::string(CurrentFunction()) + ": camera '" + Camera().Id() +
                                     "' was lost during the wait");
  }
  return buffer;
}

void DataStream::KillWait() {
  std::lock_guard lock(Camera().Mutex());
  pool_.KillWait();
}

void DataStream::Start(OXEL_ACQUISITION_START_MODE mode, uint64_t count) {
  if (mode != OXEL_ACQUISITION_START_MODE_DEFAULT) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": start mode " +
                                                std::to_string(mode) +
                                                " (only 0, the default, is known)");
  }
  std::lock_guard lock(Camera().Mutex());
  Camera().CheckAnswering(*session_);
  if (const OXEL_RETURN_CODE fault = Camera().Frames().TakeStreamStartFault()) {
    Fail(fault, std::string(CurrentFunction()) + ": " + pool_.Name() +
                    " refused to start (a fault armed with OxelSim_FailStreamStarts)");
  }
  const size_t minimum = MinBufferCount();
  if (pool_.AnnouncedCount() < minimum) {
    Fail(OXEL_RETURN_CODE_NOT_AVAILABLE,
         std::string(CurrentFunction()) + ": " + std::to_string(pool_.AnnouncedCount()) +
             " buffers announced on " + pool_.Name() + ", at least " + std::to_string(minimum) +
             " are required");
  }
  pool_.Start(count);
  Camera().Frames().SettingsChanged();
}

void DataStream::Stop(OXEL_ACQUISITION_STOP_MODE mode) {
  if (mode != OXEL_ACQUISITION_STOP_MODE_DEFAULT && mode != OXEL_ACQUISITION_STOP_MODE_KILL) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT, std::string(CurrentFunction()) + ": stop mode " +
                                                std::to_string(mode) + " (0 default or 1 kill)");
  }
  std::lock_guard lock(Camera().Mutex());
  Camera().CheckAnswering(*session_);
  pool_.Stop();
  Camera().Frames().StreamStopped(&pool_);
}

void DataStream::Flush(OXEL_DATA_STREAM_FLUSH_MODE mode) {
  std::lock_guard lock(Camera().Mutex());
  pool_.Flush(mode);
}

void DataStream::CloseLocked() {
  if (closed_) return;
  closed_ = true;
  std::vector<std::shared_ptr<PoolBuffer>> buffers;
  {
    std::lock_guard lock(Camera().Mutex());
    Camera().Frames().DetachStream(&pool_);
    pool_.Close();
    buffers = pool_.Announced();
  }
  HandleRegistry& handles = Simulator::Instance().handles;
  for (const auto& buffer : buffers) handles.Remove(buffer.get());
  info_->Unregister();
  handles.Remove(this);
  if (auto origin = origin_.lock()) origin->StreamClosedLocked();
}

}  // namespace oxelsim
