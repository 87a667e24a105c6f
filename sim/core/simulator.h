// The library's process-wide state: its users, the producer-library search,
// the opened producer libraries (and everything opened below them), the
// simulated hardware and the handle registry. Structural changes (opening,
// closing, updates) happen under `mutex`; a camera's values under its own.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/api.h"
#include "producer/hardware.h"

namespace oxelsim {

class ProducerLibrary;

class Simulator {
 public:
  static Simulator& Instance();
  ~Simulator();

  // Fails with NOT_INITIALIZED unless the library is started.
  void RequireStarted();
  void Start();
  // Ends one start; the last one closes every producer library and forgets
  // the loaded files with their cameras.
  void Stop();
  bool Started();

  // Members in order of destruction from the bottom: producers first, the
  // cameras next, the registry last.
  HandleRegistry handles;
  Hardware hardware;
  std::mutex mutex;
  std::vector<std::string> searchResults;
  bool searched = false;
  std::vector<std::shared_ptr<ProducerLibrary>> producers;

 private:
  Simulator() = default;
  int users_ = 0;
};

}  // namespace oxelsim
