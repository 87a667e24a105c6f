#include "core/simulator.h"

#include "core/api.h"
#include "transport/producer_library.h"

namespace oxelsim {

Simulator& Simulator::Instance() {
  static Simulator simulator;
  return simulator;
}

Simulator::~Simulator() {
  std::vector<std::shared_ptr<ProducerLibrary>> closing = producers;
  for (const auto& producer : closing) producer->Release();
}

void Simulator::RequireStarted() {
  std::lock_guard lock(mutex);
  if (users_ == 0) {
    Fail(OXEL_RETURN_CODE_NOT_INITIALIZED, std::string("Oxel library not initialized: call "
                                                       "OXEL_Library_Initialize before ") +
                                               CurrentFunction());
  }
}

void Simulator::Start() {
  std::lock_guard lock(mutex);
  ++users_;
}

void Simulator::Stop() {
  // The cameras go last, after the handles that the producers close.
  std::vector<std::shared_ptr<LoadedFile>> forgotten;
  std::vector<std::shared_ptr<ProducerLibrary>> closing;
  {
    std::lock_guard lock(mutex);
    if (users_ == 0) {
      Fail(OXEL_RETURN_CODE_NOT_INITIALIZED,
           "OXEL_Library_Close: the library is not initialized (more closes than initializations)");
    }
    if (--users_ > 0) return;
    closing.swap(producers);
    // Under the lock: a start that follows at once must not lose what it loads.
    forgotten = hardware.Forget();
  }
  for (const auto& producer : closing) producer->Release();
}

bool Simulator::Started() {
  std::lock_guard lock(mutex);
  return users_ > 0;
}

}  // namespace oxelsim
