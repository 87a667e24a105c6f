// Checked calls into the Oxel C library: a call that does not return success
// is turned into an exception of the family, chosen by the library's last
// error. The success path costs the call and one comparison.
#ifndef OXEL_CORE_CHECKED_CALL_H
#define OXEL_CORE_CHECKED_CALL_H

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "oxel/oxel_c.h"

namespace oxel::core {

// Reads the calling thread's last error and throws the exception it selects
// ("Error-Code: <code> (<name>) | Error-Description: <text>"). Returns
// normally when the last error is success. Throws InternalErrorException
// "Could not query the last error!" when the query itself fails.
void RaiseLastError();

// Runs `call` (no arguments, returns OXEL_RETURN_CODE); on failure see
// RaiseLastError. An empty std::function raises std::bad_function_call.
template <typename Call>
void CallChecked(Call&& call) {
  const OXEL_RETURN_CODE code = std::forward<Call>(call)();
  if (code != OXEL_RETURN_CODE_SUCCESS) [[unlikely]] {
    RaiseLastError();
  }
}

// `call(T*)` fills one value; T starts at zero.
template <typename T, typename Call>
T QueryValue(Call&& call) {
  T value{};
  CallChecked([&] { return call(&value); });
  return value;
}

// `call(char* buffer, size_t* size)` with the two-call size-then-fill protocol.
// The size counts the terminator; a reported size of 0 raises std::length_error.
template <typename Call>
std::string QueryText(Call&& call) {
  size_t size = QueryValue<size_t>([&](size_t* out) { return call(nullptr, out); });
  std::string buffer(size, '\0');
  size_t fillSize = size;  // what the fill call writes back is not used
  CallChecked([&] { return call(size == 0 ? nullptr : buffer.data(), &fillSize); });
  if (size == 0) {
    throw std::length_error("The Oxel library reported a text size of 0");
  }
  buffer.resize(size - 1);
  return buffer;
}

// `count(size_t*)` then `item(index, char*, size_t*)` for each index in order.
template <typename CountCall, typename ItemCall>
std::vector<std::string> QueryTextList(CountCall&& count, ItemCall&& item) {
  const size_t n = QueryValue<size_t>(count);
  std::vector<std::string> texts;
  texts.reserve(n);
  for (size_t index = 0; index < n; ++index) {
    texts.push_back(
        QueryText([&](char* buffer, size_t* size) { return item(index, buffer, size); }));
  }
  return texts;
}

// For destructors, which cannot report: a release that fails is dropped (the
// C library takes its objects down with their owners anyway).
template <typename Call>
void CallCheckedInDestructor(Call&& call) noexcept {
  try {
    CallChecked(std::forward<Call>(call));
  } catch (const std::exception&) {
  }
}

}  // namespace oxel::core

#endif  // OXEL_CORE_CHECKED_CALL_H
