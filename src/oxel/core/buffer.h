// One acquisition buffer of a data stream, allocated by the C library.
#ifndef OXEL_CORE_BUFFER_H
#define OXEL_CORE_BUFFER_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "oxel/core/class_creator.h"
#include "oxel/core/event_supporting_module.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class DataStream;

class Buffer : public EventSupportingModule, public std::enable_shared_from_this<Buffer> {
 public:
  Buffer(CreationKey, OXEL_BUFFER handle, std::weak_ptr<DataStream> parent);

  std::shared_ptr<DataStream> ParentDataStream() const { return LockParent(parent_); }

  void* BasePtr();
  // Bytes of the buffer.
  size_t Size();
  void* UserPtr();
  // Pixels of the delivered image.
  size_t Width();
  size_t Height();
  size_t XOffset();
  size_t YOffset();
  // PFNC code of the delivered image.
  uint64_t PixelFormat();
  uint64_t FrameID();
  uint64_t TimestampNs();
  bool IsIncomplete();

  OXEL_BUFFER Handle() const { return handle_; }

 protected:
  OXEL_MODULE ModuleHandle() const override;

 private:
  const OXEL_BUFFER handle_;
  const std::weak_ptr<DataStream> parent_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_BUFFER_H
