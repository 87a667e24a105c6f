// An opened data stream of a camera: its buffers move through the camera's
// BufferPool, and the camera's acquisition fills them while the stream is
// attached and grabbing.
#pragma once

#include <memory>

#include "camera/sim_camera.h"
#include "core/module.h"
#include "oxelc/buffer_pool.h"

namespace oxelsim {

class DataStreamDescriptor;

class DataStream : public Module, public std::enable_shared_from_this<DataStream> {
 public:
  static std::shared_ptr<DataStream> Open(std::shared_ptr<CameraSession> session,
                                          std::weak_ptr<DataStreamDescriptor> origin);
  ~DataStream() override;

  size_t NodeMapCount() const override { return 1; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override;

  size_t MinBufferCount() const;
  bool DefinesPayloadSize() const;
  size_t PayloadSize() const;
  bool Grabbing() const;
  size_t AnnouncedCount() const;
  size_t QueuedCount() const;
  size_t AwaitingDeliveryCount() const;
  uint64_t DeliveredCount() const;
  uint64_t UnderrunCount() const;

  std::shared_ptr<PoolBuffer> AllocAndAnnounce(size_t size, void* userPtr);
  void* Revoke(const std::shared_ptr<PoolBuffer>& buffer);
  void Queue(const std::shared_ptr<PoolBuffer>& buffer);
  std::shared_ptr<PoolBuffer> Wait(uint64_t timeoutMs);
  void KillWait();
  void Start(OXEL_ACQUISITION_START_MODE mode, uint64_t count);
  void Stop(OXEL_ACQUISITION_STOP_MODE mode);
  void Flush(OXEL_DATA_STREAM_FLUSH_MODE mode);
  void CloseLocked();

 private:
  DataStream(std::shared_ptr<CameraSession> session, std::weak_ptr<DataStreamDescriptor> origin);
  SimCamera& Camera() const { return session_->Camera(); }

  std::shared_ptr<CameraSession> session_;
  std::weak_ptr<DataStreamDescriptor> origin_;
  std::shared_ptr<NodeMap> info_;
  BufferPool pool_;
  bool closed_ = false;
};

}  // namespace oxelsim
