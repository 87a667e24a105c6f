// What every opened module offers through OXEL_MODULE: its node maps. Only the
// remote device has one here (the camera's own features); the transport
// layer of Aravis has no GenICam description of its own.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "core/library.h"

namespace oxelarv {

class NodeMap;

class Module {
 public:
  virtual ~Module() = default;
  virtual size_t NodeMapCount() const { return 0; }
  virtual std::shared_ptr<NodeMap> NodeMapAt(size_t index) const {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE, std::string(CurrentFunction()) + ": node map index " +
                                            std::to_string(index) + " of a module with " +
                                            std::to_string(NodeMapCount()));
  }
};

// Buffers have no node maps: every buffer handle is this module.
class BufferModule final : public Module {
 public:
  static BufferModule& Instance() {
    static BufferModule module;
    return module;
  }
};

}  // namespace oxelarv
