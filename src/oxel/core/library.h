// Start and shut-down of the Oxel C library, and its producer-library search.
#ifndef OXEL_CORE_LIBRARY_H
#define OXEL_CORE_LIBRARY_H

#include <string>
#include <vector>

namespace oxel {

class Library {
 public:
  // Binds liboxel.so.1 (the first time) and starts the C library.
  static void Initialize();
  static void Close();
  // False, without a C call, while the C library was never bound.
  static bool IsInitialized();
};

namespace core {

using Library = oxel::Library;

// The producer-library files the C library finds in the environment, in its
// order (the search is refreshed first).
std::vector<std::string> FindProducerLibraries();

}  // namespace core
}  // namespace oxel

#endif  // OXEL_CORE_LIBRARY_H
