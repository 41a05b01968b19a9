// An object that WaitForSingleObject can wait for.
#pragma once

#include <windows.h>

#include <atomic>

#include "futex.h"
#include "kernel_object.h"
#include "last_error.h"

namespace coredll {

class Waitable : public KernelObject {
 public:
  static constexpr unsigned kKinds = kSemaphoreKind | kThreadKind;

  /// Returns WaitForSingleObject's result; with WAIT_FAILED the last error is set.
  DWORD wait(DWORD milliseconds) {
    LONG before = take();
    if (before == 0 && milliseconds != 0) before = takeWithin(milliseconds);
    if (before == kClosed) return fail(ERROR_INVALID_HANDLE, WAIT_FAILED);
    return before > 0 ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
  }

  void close() override;

 protected:
  /// The object is signalled while its count is above 0. Each wait takes `amount` from the count.
  Waitable(ObjectKind ownKind, LONG initialCount, LONG amount)
      : KernelObject(ownKind), takenByWait(amount), count(initialCount) {}

  /// Adds to the count and wakes as many waiting threads. With a sum above `maximum`, and when the
  /// handle is closed, it changes nothing and returns an error code of windows.h.
  DWORD add(LONG amount, LONG maximum, LONG& before) {
    before = count;
    do {
      if (before == kClosed) return ERROR_INVALID_HANDLE;
      if (amount > maximum - before) return ERROR_TOO_MANY_POSTS;
    } while (!count.compare_exchange_weak(before, before + amount));
    wakeWaiting(amount);
    return ERROR_SUCCESS;
  }

 private:
  static constexpr LONG kClosed = -1;

  /// Returns the count before, from which this wait has taken its amount if it is above 0.
  LONG take() {
    LONG before = count;
    while (before > 0 && !count.compare_exchange_weak(before, before - takenByWait)) {
    }
    return before;
  }

  LONG takeWithin(DWORD milliseconds);

  void wakeWaiting(LONG most) {
    if (waiting > 0) wake(count, most);
  }

  const LONG takenByWait;
  std::atomic<LONG> count;       ///< kClosed when the handle is closed
  std::atomic<LONG> waiting{0};  ///< the threads that may sleep
};

}  // namespace coredll
