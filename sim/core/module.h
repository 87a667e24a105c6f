// What every opened module (system, interface, device, remote device, data
// stream, buffer) offers through OXEL_MODULE: its node maps.
#pragma once

#include <cstddef>
#include <memory>

namespace oxelsim {

class NodeMap;

class Module {
 public:
  virtual ~Module() = default;
  virtual size_t NodeMapCount() const = 0;
  // Fails with OUT_OF_RANGE for an index at or above NodeMapCount.
  virtual std::shared_ptr<NodeMap> NodeMapAt(size_t index) const = 0;
};

}  // namespace oxelsim
