// Host memory for the fuzzer: every block the host hands the plug-in sits
// between guard bytes, so a write just outside what the host described is
// seen even where the address sanitizer's red zones would not catch it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tavro::fuzz {

class GuardedBlock {
 public:
  static constexpr size_t kGuard = 64;
  static constexpr uint8_t kGuardByte = 0xC7;

  // `bytes` usable bytes, filled with `fill`.
  explicit GuardedBlock(size_t bytes = 0, uint8_t fill = 0x5A) { Reset(bytes, fill); }

  // Always new memory: a plug-in still holding the old block then writes
  // into freed memory, which the address sanitizer names.
  void Reset(size_t bytes, uint8_t fill = 0x5A) {
    bytes_ = bytes;
    memory_ = std::vector<uint8_t>(bytes + 2 * kGuard, kGuardByte);
    std::memset(memory_.data() + kGuard, fill, bytes);
  }
  uint8_t* data() { return memory_.data() + kGuard; }
  size_t size() const { return bytes_; }
  template <typename T>
  T* As() {
    return reinterpret_cast<T*>(data());
  }

  // The offset of the first guard byte that changed, counted from the
  // usable start (negative: before it), or nothing.
  bool Intact(ptrdiff_t* changedAt = nullptr) const {
    // Checked after every call: the whole-zone compare is the fast path.
    static const std::vector<uint8_t> kIntact(kGuard, kGuardByte);
    if (std::memcmp(memory_.data(), kIntact.data(), kGuard) == 0 &&
        std::memcmp(memory_.data() + kGuard + bytes_, kIntact.data(), kGuard) == 0) {
      return true;
    }
    for (size_t i = 0; i < kGuard; ++i) {
      if (memory_[i] != kGuardByte) return Report(changedAt, static_cast<ptrdiff_t>(i - kGuard));
      if (memory_[kGuard + bytes_ + i] != kGuardByte) {
        return Report(changedAt, static_cast<ptrdiff_t>(bytes_ + i));
      }
    }
    return true;
  }

 private:
  static bool Report(ptrdiff_t* changedAt, ptrdiff_t offset) {
    if (changedAt != nullptr) *changedAt = offset;
    return false;
  }

  size_t bytes_ = 0;
  std::vector<uint8_t> memory_;
};

}  // namespace tavro::fuzz
