// An opened data stream of a camera. The buffers move through the GenTL
// queues of a BufferPool; while the stream is grabbing, queued buffers are
// handed to Aravis, which fills their memory in place, and a pump thread
// moves each finished one to the output queue. Nothing is copied.
#pragma once

#include <arv.h>

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "core/gobject_ref.h"
#include "core/module.h"
#include "fake/test_picture.h"
#include "oxelc/buffer_pool.h"

namespace oxelarv {

class DataStreamDescriptor;

class DataStream : public Module, public std::enable_shared_from_this<DataStream> {
 public:
  static std::shared_ptr<DataStream> Open(GRef<ArvDevice> device, std::string cameraId,
                                          std::weak_ptr<DataStreamDescriptor> origin);
  ~DataStream() override;

  // The minimum Tavro hosts can rely on: one buffer filling, one delivered.
  size_t MinBufferCount() const { return 2; }
  // The largest frame the camera can send (whole sensor, widest pixel
  // format): buffers announced once stay large enough whatever the host
  // selects later.
  bool DefinesPayloadSize() const { return true; }
  size_t PayloadSize() const;
  bool Grabbing();
  size_t AnnouncedCount();
  size_t QueuedCount();
  size_t AwaitingDeliveryCount();
  uint64_t DeliveredCount();
  uint64_t UnderrunCount();

  std::shared_ptr<PoolBuffer> AllocAndAnnounce(size_t size, void* userPtr);
  void* Revoke(const std::shared_ptr<PoolBuffer>& buffer);
  void Queue(const std::shared_ptr<PoolBuffer>& buffer);
  std::shared_ptr<PoolBuffer> Wait(uint64_t timeoutMs);
  void KillWait();
  void Start(OXEL_ACQUISITION_START_MODE mode, uint64_t count);
  void Stop(OXEL_ACQUISITION_STOP_MODE mode);
  void Flush(OXEL_DATA_STREAM_FLUSH_MODE mode);
  void CloseLocked();
  // The camera went away: waits end and grabbing stops.
  void Lose();

 private:
  DataStream(GRef<ArvDevice> device, std::string cameraId,
             std::weak_ptr<DataStreamDescriptor> origin);
  void HandToAravisLocked(const std::shared_ptr<PoolBuffer>& buffer);
  void TakeBackFromAravisLocked();
  void Pump();

  GRef<ArvDevice> device_;
  std::string cameraId_;
  std::weak_ptr<DataStreamDescriptor> origin_;
  GRef<ArvStream> stream_;
  bool aravisThreadRunning_ = true;  // Aravis starts it with the stream
  std::mutex mutex_;
  BufferPool pool_;
  std::map<const PoolBuffer*, GRef<ArvBuffer>> aravisBuffers_;
  std::map<const ArvBuffer*, std::shared_ptr<PoolBuffer>> byAravisBuffer_;
  // Handed to Aravis and not finished yet, oldest first.
  std::vector<std::shared_ptr<PoolBuffer>> atAravis_;
  FrameIdUnwrapper ids_;
  bool lost_ = false;
  bool closed_ = false;
  std::atomic<bool> stopPump_{false};
  std::thread pump_;
};

}  // namespace oxelarv
