// A mutex whose use clang checks, and what says which of them guards what.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#if defined(__clang__)
#define LIRVOX_THREAD_SAFETY(...) __attribute__((__VA_ARGS__))
#else
#define LIRVOX_THREAD_SAFETY(...)
#endif

/// A class whose objects are locks, or stand for one, and one whose objects hold a lock for as long
/// as they live.
#define LIRVOX_CAPABILITY(name) LIRVOX_THREAD_SAFETY(capability(name))
#define LIRVOX_SCOPED_CAPABILITY LIRVOX_THREAD_SAFETY(scoped_lockable)

/// A member that is used under this lock only.
#define LIRVOX_GUARDED_BY(lock) LIRVOX_THREAD_SAFETY(guarded_by(lock))

/// A function that is called with or without these locks, that takes or gives up one, or that is
/// called only where the lock is known to be held.
#define LIRVOX_REQUIRES(...) LIRVOX_THREAD_SAFETY(requires_capability(__VA_ARGS__))
#define LIRVOX_EXCLUDES(...) LIRVOX_THREAD_SAFETY(locks_excluded(__VA_ARGS__))
#define LIRVOX_ACQUIRE(...) LIRVOX_THREAD_SAFETY(acquire_capability(__VA_ARGS__))
#define LIRVOX_RELEASE(...) LIRVOX_THREAD_SAFETY(release_capability(__VA_ARGS__))
#define LIRVOX_ASSERTS(lock) LIRVOX_THREAD_SAFETY(assert_capability(lock))

namespace lirvox::platform {

/// `std::mutex`, of which the analysis knows nothing when the standard library is GCC's.
class LIRVOX_CAPABILITY("mutex") Mutex {
 public:
  void lock() LIRVOX_ACQUIRE() { native_.lock(); }
  void unlock() LIRVOX_RELEASE() { native_.unlock(); }

 private:
  friend class Condition;

  std::mutex native_;
};

/// Holds a mutex for as long as it lives.
class LIRVOX_SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) LIRVOX_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~MutexLock() LIRVOX_RELEASE() { mutex_.unlock(); }

  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  Mutex& mutex_;
};

/// Something that those who hold a mutex wait for. It takes no predicate, since the analysis does
/// not see that one is called under the lock: wait in a loop.
class Condition {
 public:
  void wait(Mutex& mutex) LIRVOX_REQUIRES(mutex) {
    std::unique_lock lock(mutex.native_, std::adopt_lock);
    changed_.wait(lock);
    lock.release();
  }

  /// False once `deadline` is over.
  bool waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline)
      LIRVOX_REQUIRES(mutex) {
    std::unique_lock lock(mutex.native_, std::adopt_lock);
    const std::cv_status status = changed_.wait_until(lock, deadline);
    lock.release();
    return status == std::cv_status::no_timeout;
  }

  void notifyAll() { changed_.notify_all(); }

 private:
  std::condition_variable changed_;
};

}  // namespace lirvox::platform
