// Owning references to GLib objects, released with g_object_unref.
#pragma once

#include <glib-object.h>

#include <utility>

namespace oxelarv {

template <class T>
class GRef {
 public:
  GRef() = default;
  // Takes over a reference the caller owns (a "transfer full" result).
  explicit GRef(T* owned) : object_(owned) {}
  GRef(const GRef& other) : object_(other.object_) {
    if (object_ != nullptr) g_object_ref(object_);
  }
  GRef(GRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  GRef& operator=(GRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~GRef() {
    if (object_ != nullptr) g_object_unref(object_);
  }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace oxelarv
