// Mutexes whose use the compiler checks. Under clang (-Wthread-safety), data
// marked TAVRO_GUARDED_BY(m) can only be touched with m held, and functions
// marked TAVRO_REQUIRES(m) only called with it held; other compilers build
// the same code without the checks.
#pragma once

#include <mutex>

#if defined(__clang__)
#define TAVRO_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define TAVRO_THREAD_ANNOTATION(x)
#endif

#define TAVRO_CAPABILITY(name) TAVRO_THREAD_ANNOTATION(capability(name))
#define TAVRO_SCOPED_CAPABILITY TAVRO_THREAD_ANNOTATION(scoped_lockable)
#define TAVRO_GUARDED_BY(m) TAVRO_THREAD_ANNOTATION(guarded_by(m))
#define TAVRO_REQUIRES(...) TAVRO_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define TAVRO_EXCLUDES(...) TAVRO_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define TAVRO_ACQUIRE(...) TAVRO_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define TAVRO_RELEASE(...) TAVRO_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define TAVRO_RETURN_CAPABILITY(m) TAVRO_THREAD_ANNOTATION(lock_returned(m))

namespace tavro::platform {

// A std::mutex, or a std::recursive_mutex where a host callback made under
// the lock may call back into the plug-in on the same thread.
template <typename Base>
class TAVRO_CAPABILITY("mutex") BasicMutex {
 public:
  void lock() TAVRO_ACQUIRE() { mutex_.lock(); }
  void unlock() TAVRO_RELEASE() { mutex_.unlock(); }

 private:
  Base mutex_;
};

using Mutex = BasicMutex<std::mutex>;
using RecursiveMutex = BasicMutex<std::recursive_mutex>;

template <typename M>
class TAVRO_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(M& mutex) TAVRO_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() TAVRO_RELEASE() { mutex_.unlock(); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  M& mutex_;
};

}  // namespace tavro::platform
