#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "base/os_primitives.h"
#include "base/thread_safety.h"

namespace ipodctl {

/// A binary semaphore of the system, created when it is first needed. It serves either as a lock,
/// which is free at first, or as a signal. Times are those of semMutexTake: 0 and 0 wait for ever.
class IPODCTL_CAPABILITY("semaphore") Semaphore {
 public:
  constexpr Semaphore() = default;

  /// Closes the semaphore if it was created.
  ~Semaphore();
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  /// Creates the semaphore unless it exists. Of two threads that do so at once, one creates it.
  /// Returns false when the system has none left.
  bool ensure();

  bool exists() const { return handle() != nullptr; }

  /// Returns the system's handle; null before the semaphore was created.
  HANDLE handle() const { return semaphore.load(std::memory_order_relaxed); }

  /// Releases the semaphore and closes it.
  void releaseAndClose();

  // A lock.

  /// Takes the lock. Returns false when the time is over first, or when there is no semaphore.
  [[nodiscard]] bool take(uint32_t nanoseconds, uint32_t seconds) IPODCTL_TRY_ACQUIRE(true);

  /// Takes the lock if it is free.
  [[nodiscard]] bool tryTake() IPODCTL_TRY_ACQUIRE(true);

  /// Releases the lock. Returns what semMutexGive returns.
  int give() IPODCTL_RELEASE();

  // A signal.

  /// Waits for the signal and consumes it. Returns false when the time is over first.
  bool await(uint32_t nanoseconds, uint32_t seconds);

  void signal();
  void reset();

 private:
  std::atomic<HANDLE> semaphore{nullptr};
};

/// Holds a semaphore that is a lock. Waits for it without limit.
class IPODCTL_SCOPED_CAPABILITY SemaphoreHold {
 public:
  explicit SemaphoreHold(Semaphore& lock) IPODCTL_ACQUIRE(lock);
  ~SemaphoreHold() IPODCTL_RELEASE();
  SemaphoreHold(const SemaphoreHold&) = delete;
  SemaphoreHold& operator=(const SemaphoreHold&) = delete;

 private:
  Semaphore& held;
};

inline bool Semaphore::take(uint32_t nanoseconds, uint32_t seconds) {
  return semMutexTake(handle(), nanoseconds, seconds) == 0;
}

inline bool Semaphore::tryTake() { return semMutexTryLock(handle()) == 0; }

inline int Semaphore::give() { return semMutexGive(handle()); }

inline bool Semaphore::await(uint32_t nanoseconds, uint32_t seconds) {
  return semMutexTake(handle(), nanoseconds, seconds) == 0;
}

inline void Semaphore::signal() { semMutexGive(handle()); }

inline void Semaphore::reset() { semMutexTryLock(handle()); }

inline SemaphoreHold::SemaphoreHold(Semaphore& lock) : held(lock) {
  semMutexTake(held.handle(), 0, 0);
}

inline SemaphoreHold::~SemaphoreHold() { held.give(); }

}  // namespace ipodctl
