// The Oxel library over Aravis: its users, its settings, the handles it has
// given out and the one producer it offers (itself).
#pragma once

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "oxelc/api_call.h"
#include "oxelc/callback_list.h"
#include "oxelc/handle_registry.h"
#include "oxelc/return_code_names.h"

namespace oxelarv {

using namespace oxelc;

// Read from the environment when the first user initializes the library.
struct Settings {
  // OXEL_ARAVIS_FAKE=1: Aravis's in-process fake camera, described by our
  // GenICam file and drawing the test picture.
  bool fakeCamera = false;
  // OXEL_ARAVIS_AS_U3V=ID[,ID...]: devices reported as USB3 Vision whatever
  // their protocol, so that a GigE camera can stand in for one in tests.
  std::set<std::string> asU3V;
};

// An opened producer, released when the last user closes the library.
class Releasable {
 public:
  virtual ~Releasable() = default;
  virtual void Release() = 0;
};

class Library {
 public:
  static Library& Instance();

  void Start();
  void Stop();
  bool Started();
  // Fails with NOT_INITIALIZED unless a user has initialized the library.
  void RequireStarted();
  Settings CurrentSettings();

  // The file this library was loaded from: the one producer it lists.
  static const std::string& OwnPath();
  // Our GenICam description of the fake camera, installed beside the library.
  static std::string FakeCameraGenicamPath();
  static std::string AravisVersion();

  // Guards the structure of opened modules (open, close, updates).
  std::recursive_mutex mutex;
  HandleRegistry handles;
  // Guarded by `mutex`.
  std::vector<std::shared_ptr<Releasable>> producers;

 private:
  Library() = default;
  std::mutex usersMutex_;
  int users_ = 0;
  Settings settings_;
};

// A handle of the given kind, after checking that the library is started.
template <class T, class Handle>
Ref<T> Find(Handle handle, Kind kind, const char* what) {
  Library& library = Library::Instance();
  library.RequireStarted();
  return library.handles.Find<T>(handle, kind, what);
}

}  // namespace oxelarv
