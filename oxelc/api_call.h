// Failures inside an Oxel library and how they reach a C caller: every exported
// function runs its body through RunApiCall, which turns a thrown ApiError into
// the function's return code and the calling thread's last error.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

#include "oxel/oxel_c.h"

namespace oxelc {

class ApiError : public std::runtime_error {
 public:
  ApiError(OXEL_RETURN_CODE code, const std::string& text)
      : std::runtime_error(text), code_(code) {}
  OXEL_RETURN_CODE Code() const { return code_; }

 private:
  OXEL_RETURN_CODE code_;
};

[[noreturn]] void Fail(OXEL_RETURN_CODE code, const std::string& text);

// The calling thread's last error. The text lives in the record itself, not
// on the heap: threads of the library's users come and go, and heap memory
// reachable only from a thread's dynamic TLS is reported as a leak by some
// leak checkers.
struct LastError {
  static constexpr size_t kLongest = 1023;  // longer texts are cut
  OXEL_RETURN_CODE code = OXEL_RETURN_CODE_SUCCESS;
  std::array<char, kLongest + 1> text{};
  size_t length = 0;

  std::string_view Description() const { return {text.data(), length}; }
  void SetDescription(std::string_view description) {
    length = std::min(description.size(), kLongest);
    description.copy(text.data(), length);
    text[length] = '\0';
  }
};
LastError& ThreadLastError();

// Name of the exported function the calling thread is in, for error texts.
const char* CurrentFunction();

// Runs `body` as the exported function `function`: success gives 0, a ApiError
// gives its code and becomes the last error, any other exception becomes
// OXEL_RETURN_CODE_ERROR (or BAD_ALLOC) with its text. Nothing escapes.
template <class Body>
OXEL_RETURN_CODE RunApiCall(const char* function, Body&& body) noexcept;

// Out-parameter check: a null pointer fails with INVALID_ARGUMENT naming it.
template <class T>
T& Out(T* pointer, const char* name) {
  if (pointer == nullptr) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": null pointer given for '" + name + "'");
  }
  return *pointer;
}

// The two-call text protocol: a null buffer asks for the size (terminator
// included); a buffer shorter than that fails with BUFFER_TOO_SMALL and still
// reports the size needed.
void WriteText(std::string_view text, char* buffer, size_t* size);

// A text passed in as pointer and length plus 1.
std::string ReadText(const char* text, size_t size, const char* name);

namespace detail {
OXEL_RETURN_CODE Record(OXEL_RETURN_CODE code, const std::string& text);
class FunctionScope {
 public:
  explicit FunctionScope(const char* function);
  ~FunctionScope();
  FunctionScope(const FunctionScope&) = delete;
  FunctionScope& operator=(const FunctionScope&) = delete;

 private:
  const char* previous_;
};
}  // namespace detail

template <class Body>
OXEL_RETURN_CODE RunApiCall(const char* function, Body&& body) noexcept {
  detail::FunctionScope scope(function);
  try {
    body();
    return OXEL_RETURN_CODE_SUCCESS;
  } catch (const ApiError& error) {
    return detail::Record(error.Code(), error.what());
  } catch (const std::bad_alloc&) {
    return detail::Record(OXEL_RETURN_CODE_BAD_ALLOC, std::string(function) + ": out of memory");
  } catch (const std::exception& error) {
    return detail::Record(OXEL_RETURN_CODE_ERROR,
                          std::string(function) + ": internal error: " + error.what());
  } catch (...) {
    return detail::Record(OXEL_RETURN_CODE_ERROR, std::string(function) + ": unknown failure");
  }
}

}  // namespace oxelc
