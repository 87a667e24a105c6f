// A stand-in for the Oxel C library's function table, for tests that must
// control exactly what the C side answers. Every function not set by a test
// fails with NOT_IMPLEMENTED and a last error naming it.
#ifndef TESTS_OXEL_FAKE_OXEL_H
#define TESTS_OXEL_FAKE_OXEL_H

#include <cstdint>
#include <string>

#include "oxel/core/oxel_functions.h"

namespace fake_oxel {

// The calling thread's last error as the fake reports it.
void SetLastError(OXEL_RETURN_CODE code, const std::string& description);
// Makes the first (size) or second (fill) last-error query fail.
void FailLastErrorQuery(bool sizeQuery, bool fillQuery);
int LastErrorQueries();

// Installs a fake table for its lifetime and restores the previous table
// afterwards. Tests set the members they need. It starts from stubs, or from
// `base` (a spy over the simulator) with the real last error.
class ScopedTable {
 public:
  explicit ScopedTable(const oxel::core::OxelFunctions* base = nullptr);
  ~ScopedTable();
  ScopedTable(const ScopedTable&) = delete;
  ScopedTable& operator=(const ScopedTable&) = delete;

  oxel::core::OxelFunctions table;

 private:
  const oxel::core::OxelFunctions* previous_;
};

// Opaque handles made from small numbers, and back.
template <typename Handle>
Handle MakeHandle(uintptr_t number) {
  return reinterpret_cast<Handle>(number);
}
template <typename Handle>
uintptr_t HandleNumber(Handle handle) {
  return reinterpret_cast<uintptr_t>(handle);
}

// Writes `text` through the two-call text protocol.
OXEL_RETURN_CODE WriteText(const std::string& text, char* buffer, size_t* size);

}  // namespace fake_oxel

#endif  // TESTS_OXEL_FAKE_OXEL_H
