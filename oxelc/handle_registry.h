// Every handle given to a C caller is the address of a live library object,
// filed here with its kind. A handle that is not filed (never given out,
// closed, or of another kind) is refused with INVALID_HANDLE instead of being
// dereferenced.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

namespace oxelc {

enum class Kind {
  ProducerLibrary,
  SystemDescriptor,
  System,
  InterfaceDescriptor,
  Interface,
  DeviceDescriptor,
  Device,
  RemoteDevice,
  DataStreamDescriptor,
  DataStream,
  Buffer,
  NodeMap,
  Node,
};

const char* KindName(Kind kind);

// A looked-up handle: the object, kept alive by its owner for the call.
template <class T>
struct Ref {
  std::shared_ptr<void> keepAlive;
  T* object = nullptr;
  T* operator->() const { return object; }
  T& operator*() const { return *object; }
};

class HandleRegistry {
 public:
  // `owner` keeps `object` alive; the entry dies with it at the latest.
  // `module` is the object as the library's module type (cast there before it
  // is passed here, so that a base other than the first is found right).
  void Add(const void* handle, Kind kind, std::weak_ptr<void> owner, void* object,
           void* module = nullptr);
  void Remove(const void* handle);

  template <class T>
  Ref<T> Find(const void* handle, Kind kind, const char* what) {
    Entry entry = FindEntry(handle, kind, what);
    return Ref<T>{std::move(entry.keep), static_cast<T*>(entry.object)};
  }
  // Any module handle: system, interface, device, remote device, stream, buffer.
  template <class Module>
  Ref<Module> FindModule(const void* handle, const char* what) {
    Entry entry = FindModuleEntry(handle, what);
    return Ref<Module>{std::move(entry.keep), static_cast<Module*>(entry.module)};
  }

  void Clear();

 private:
  struct Entry {
    Kind kind;
    std::weak_ptr<void> owner;
    void* object;
    void* module;
    std::shared_ptr<void> keep;
  };
  Entry FindEntry(const void* handle, Kind kind, const char* what);
  Entry FindModuleEntry(const void* handle, const char* what);
  Entry Lock(const void* handle, const char* what);

  std::mutex mutex_;
  std::unordered_map<const void*, Entry> entries_;
};

std::string HandleText(const void* handle);

}  // namespace oxelc
