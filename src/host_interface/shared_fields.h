// Fields of the host's records that one thread writes while another may read
// them: the live run's fields, a slot's attached and live flags. They stay
// plain fields of the host's layout, read and written whole (a 32-bit or
// pointer load or store, as the host itself does), but through atomic views,
// so that a status poll beside a wait, or the worker's display beside a
// stop, sees each value whole and in order.
#pragma once

#include <atomic>
#include <type_traits>

namespace tavro::host_interface {

template <typename T>
T Load(const T& field) {
  static_assert(std::is_trivially_copyable_v<T> && sizeof(T) <= sizeof(void*));
  return std::atomic_ref<T>(const_cast<T&>(field)).load();
}

template <typename T, typename V>
void Store(T& field, V value) {
  std::atomic_ref<T>(field).store(static_cast<T>(value));
}

}  // namespace tavro::host_interface
