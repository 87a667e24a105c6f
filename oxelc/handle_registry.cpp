#include "oxelc/handle_registry.h"

#include <cstdio>

#include "oxelc/api_call.h"

namespace oxelc {

const char* KindName(Kind kind) {
  switch (kind) {
    case Kind::ProducerLibrary:
      return "producer library";
    case Kind::SystemDescriptor:
      return "system descriptor";
    case Kind::System:
      return "system";
    case Kind::InterfaceDescriptor:
      return "interface descriptor";
    case Kind::Interface:
      return "interface";
    case Kind::DeviceDescriptor:
      return "device descriptor";
    case Kind::Device:
      return "device";
    case Kind::RemoteDevice:
      return "remote device";
    case Kind::DataStreamDescriptor:
      return "data stream descriptor";
    case Kind::DataStream:
      return "data stream";
    case Kind::Buffer:
      return "buffer";
    case Kind::NodeMap:
      return "node map";
    case Kind::Node:
      return "node";
  }
  return "object";
}

std::string HandleText(const void* handle) {
  char text[32];
  std::snprintf(text, sizeof text, "%p", handle);
  return text;
}

void HandleRegistry::Add(const void* handle, Kind kind, std::weak_ptr<void> owner, void* object,
                         void* module) {
  std::lock_guard lock(mutex_);
  entries_[handle] = Entry{kind, std::move(owner), object, module, nullptr};
}

void HandleRegistry::Remove(const void* handle) {
  std::lock_guard lock(mutex_);
  entries_.erase(handle);
}

void HandleRegistry::Clear() {
  std::lock_guard lock(mutex_);
  entries_.clear();
}

HandleRegistry::Entry HandleRegistry::Lock(const void* handle, const char* what) {
  if (handle == nullptr) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE,
         std::string(CurrentFunction()) + ": null handle given for '" + what + "'");
  }
  std::lock_guard lock(mutex_);
  auto found = entries_.find(handle);
  if (found != entries_.end()) {
    Entry entry = found->second;
    entry.keep = entry.owner.lock();
    if (entry.keep) return entry;
    entries_.erase(found);
  }
  Fail(OXEL_RETURN_CODE_INVALID_HANDLE, std::string(CurrentFunction()) + ": '" + what + "' " +
                                            HandleText(handle) +
                                            " is not a live handle (closed, released or never "
                                            "given out)");
}

HandleRegistry::Entry HandleRegistry::FindEntry(const void* handle, Kind kind, const char* what) {
  Entry entry = Lock(handle, what);
  if (entry.kind != kind) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE, std::string(CurrentFunction()) + ": '" + what + "' " +
                                              HandleText(handle) + " is a " + KindName(entry.kind) +
                                              " handle, not a " + KindName(kind) + " handle");
  }
  return entry;
}

HandleRegistry::Entry HandleRegistry::FindModuleEntry(const void* handle, const char* what) {
  Entry entry = Lock(handle, what);
  if (entry.module == nullptr) {
    Fail(OXEL_RETURN_CODE_INVALID_HANDLE, std::string(CurrentFunction()) + ": '" + what + "' " +
                                              HandleText(handle) + " is a " + KindName(entry.kind) +
                                              " handle, not a module");
  }
  return entry;
}

}  // namespace oxelc
