// A scripted transport layer behind the fake C table: producer files that
// open or fail, one system per file, and interfaces and devices that the next
// update reports found or lost. Lets a test drive the device manager through
// cases a real camera system cannot be made to show on demand.
#ifndef TESTS_OXEL_FAKE_TRANSPORT_H
#define TESTS_OXEL_FAKE_TRANSPORT_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "oxel/fake_oxel.h"

namespace fake_oxel {

// One notification of an update: a found descriptor number, or a lost key.
struct Event {
  bool found;
  uintptr_t number;  // found: descriptor number (interface n is "If<n>", device n "Dev<n>")
  std::string lostKey;
};
inline Event Found(uintptr_t number) {
  return {true, number, {}};
}
inline Event Lost(std::string key) {
  return {false, 0, std::move(key)};
}

class FakeTransport {
 public:
  FakeTransport();
  ~FakeTransport();

  // Producer file paths; a path not listed fails to open.
  void AddProducer(const std::string& path, uintptr_t systemNumber);
  // What the next update of system n ("Sys<n>") or interface n ("If<n>") reports.
  void Script(const std::string& owner, std::vector<Event> events);
  // The next update of that owner fails with `code`.
  void FailNextUpdate(const std::string& owner, OXEL_RETURN_CODE code);

  int OpenCount(const std::string& path) const;
  std::vector<uint64_t> UpdateTimeouts() const;
  // "Close Sys1", "Close If10", "Close Dev20", "Release /a.cti", in order.
  std::vector<std::string> Releases() const;

 private:
  ScopedTable fake_;
};

}  // namespace fake_oxel

#endif  // TESTS_OXEL_FAKE_TRANSPORT_H
