// An opened data stream: buffers are announced and queued to it, filled by
// the camera, and waited for. The buffer lock guards the stream's list and
// handle map only; it is never held while waiting for a frame, so another
// thread can queue, revoke or stop while one thread waits.
#ifndef OXEL_CORE_DATA_STREAM_H
#define OXEL_CORE_DATA_STREAM_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "oxel/core/buffer.h"
#include "oxel/core/class_creator.h"
#include "oxel/core/event_supporting_module.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class Device;

class DataStream : public EventSupportingModule, public std::enable_shared_from_this<DataStream> {
 public:
  DataStream(CreationKey, OXEL_DATA_STREAM handle, std::weak_ptr<Device> parent);
  // Stops a grabbing stream, flushes it, revokes every announced buffer, then
  // closes the handle.
  ~DataStream() override;

  std::string ID() const;
  std::shared_ptr<Device> ParentDevice() const { return LockParent(parent_); }

  size_t NumBuffersAnnouncedMinRequired();
  size_t NumBuffersAnnounced();
  size_t NumBuffersQueued();
  size_t NumBuffersAwaitDelivery();
  uint64_t NumBuffersDelivered();
  uint64_t NumUnderruns();
  bool DefinesPayloadSize();
  size_t PayloadSize();
  bool IsGrabbing();

  // The C library allocates and announces one buffer of `size` bytes.
  std::shared_ptr<Buffer> AllocAndAnnounceBuffer(size_t size, void* userPtr);
  void QueueBuffer(const std::shared_ptr<Buffer>& buffer);
  // Blocks until a buffer is finished; TimeoutException when `timeoutMs`
  // passes, AbortedException after KillWait. Returns the very object that
  // AllocAndAnnounceBuffer returned for that buffer.
  std::shared_ptr<Buffer> WaitForFinishedBuffer(uint64_t timeoutMs);
  void KillWait();
  void StartAcquisition(OXEL_ACQUISITION_START_MODE mode = OXEL_ACQUISITION_START_MODE_DEFAULT,
                        uint64_t count = OXEL_INFINITE_NUMBER);
  void StopAcquisition(OXEL_ACQUISITION_STOP_MODE mode = OXEL_ACQUISITION_STOP_MODE_DEFAULT);
  void Flush(OXEL_DATA_STREAM_FLUSH_MODE mode);
  // A copy of the announced buffers, in announce order.
  std::vector<std::shared_ptr<Buffer>> AnnouncedBuffers();
  void RevokeBuffer(const std::shared_ptr<Buffer>& buffer);

  OXEL_DATA_STREAM Handle() const { return handle_; }

 protected:
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_DATA_STREAM handle_;
  const std::weak_ptr<Device> parent_;
  std::mutex bufferMutex_;
  std::vector<std::shared_ptr<Buffer>> announced_;
  std::unordered_map<OXEL_BUFFER, std::shared_ptr<Buffer>> byHandle_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_DATA_STREAM_H
