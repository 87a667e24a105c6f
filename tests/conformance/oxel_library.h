// An Oxel camera library loaded by path (OXEL_LIBRARY_UNDER_TEST), with every
// function of the C interface resolved, and the first USB3 Vision camera it
// lists opened with its remote node map and data stream: what the
// conformance tests run against, whichever library it is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "oxel/oxel_c.h"

namespace conformance {

struct Functions {
#define CONFORMANCE_DECLARE(name) decltype(&::name) name = nullptr;
  OXEL_FOR_EACH_FUNCTION(CONFORMANCE_DECLARE)
#undef CONFORMANCE_DECLARE
};

// The library under test, loaded once per process.
const Functions& Oxel();

// Whether the library under test is the simulator (it has the simulator's
// control functions).
bool IsSimulator();

// The calling thread's last error text.
std::string LastErrorText();

// A text read through the two-call convention; fails the test on error.
template <class Call>
std::string Text(Call call) {
  size_t size = 0;
  if (call(nullptr, &size) != OXEL_RETURN_CODE_SUCCESS || size == 0) return "<no text>";
  std::string text(size, '\0');
  if (call(text.data(), &size) != OXEL_RETURN_CODE_SUCCESS) return "<no text>";
  text.resize(size - 1);
  return text;
}

// One opened camera, closed (and the library closed) on destruction.
class OpenedCamera {
 public:
  OpenedCamera();
  ~OpenedCamera();
  OpenedCamera(const OpenedCamera&) = delete;
  OpenedCamera& operator=(const OpenedCamera&) = delete;

  OXEL_DEVICE_DESCRIPTOR descriptor = nullptr;
  OXEL_DEVICE device = nullptr;
  OXEL_NODE_MAP nodeMap = nullptr;
  OXEL_DATA_STREAM stream = nullptr;
  std::string id;

  OXEL_NODE Node(const std::string& name) const;
  int64_t Integer(const std::string& name) const;
  OXEL_RETURN_CODE SetInteger(const std::string& name, int64_t value) const;
  OXEL_RETURN_CODE SetEntry(const std::string& name, const std::string& entry) const;
  OXEL_RETURN_CODE Execute(const std::string& name) const;
  // Software trigger on ExposureStart and the camera started.
  void StartTriggered() const;
  void StopCamera() const;

 private:
  std::vector<OXEL_PRODUCER_LIBRARY> producers_;
  std::vector<OXEL_SYSTEM> systems_;
  std::vector<OXEL_INTERFACE> interfaces_;
};

}  // namespace conformance
