// What every opened module (system, interface, device, remote device, data
// stream, buffer) offers through OXEL_MODULE: its node maps.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "core/api.h"

namespace oxelsim {

class NodeMap;

class Module {
 public:
  virtual ~Module() = default;
  virtual size_t NodeMapCount() const = 0;
  // Fails with OUT_OF_RANGE for an index at or above NodeMapCount.
  virtual std::shared_ptr<NodeMap> NodeMapAt(size_t index) const = 0;
};

// Buffers have no node maps: every buffer handle is this module.
class BufferModule final : public Module {
 public:
  static BufferModule& Instance() {
    static BufferModule module;
    return module;
  }
  size_t NodeMapCount() const override { return 0; }
  std::shared_ptr<NodeMap> NodeMapAt(size_t index) const override {
    Fail(OXEL_RETURN_CODE_OUT_OF_RANGE,
         "node map index " + std::to_string(index) + " of a buffer, which has no node maps");
  }
};

}  // namespace oxelsim
