#include "oxelc/api_call.h"

#include <cstring>

namespace oxelc {

namespace {
thread_local LastError lastError;
thread_local const char* currentFunction = "Oxel library";
}  // namespace

void Fail(OXEL_RETURN_CODE code, const std::string& text) {
  throw ApiError(code, text);
}

LastError& ThreadLastError() {
  return lastError;
}

const char* CurrentFunction() {
  return currentFunction;
}

void WriteText(std::string_view text, char* buffer, size_t* size) {
  size_t& capacity = Out(size, "size");
  const size_t needed = text.size() + 1;
  if (buffer == nullptr) {
    capacity = needed;
    return;
  }
  if (capacity < needed) {
    const size_t given = capacity;
    capacity = needed;
    Fail(OXEL_RETURN_CODE_BUFFER_TOO_SMALL,
         std::string(CurrentFunction()) + ": buffer of " + std::to_string(given) +
             " bytes for a text of " + std::to_string(needed) + " bytes (terminator included)");
  }
  std::memcpy(buffer, text.data(), text.size());
  buffer[text.size()] = '\0';
  capacity = needed;
}

std::string ReadText(const char* text, size_t size, const char* name) {
  if (text == nullptr) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": null pointer given for '" + name + "'");
  }
  const size_t length = strnlen(text, size);
  if (size == 0 || length != size - 1) {
    Fail(OXEL_RETURN_CODE_INVALID_ARGUMENT,
         std::string(CurrentFunction()) + ": '" + name + "' \"" + std::string(text, length) +
             "\" has length " + std::to_string(length) + " but size " + std::to_string(size) +
             " was given (the size must be the length plus 1)");
  }
  return std::string(text, length);
}

namespace detail {

OXEL_RETURN_CODE Record(OXEL_RETURN_CODE code, const std::string& text) {
  lastError.code = code;
  lastError.SetDescription(text);
  return code;
}

FunctionScope::FunctionScope(const char* function) : previous_(currentFunction) {
  currentFunction = function;
}

FunctionScope::~FunctionScope() {
  currentFunction = previous_;
}

}  // namespace detail

}  // namespace oxelc
