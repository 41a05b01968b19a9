// An object that WaitForSingleObject can wait for.
#pragma once

#include <windows.h>

#include <condition_variable>
#include <mutex>

#include "clock.h"
#include "kernel_object.h"

namespace coredll {

class Waitable : public KernelObject {
 public:
  static constexpr unsigned kKinds = kSemaphoreKind | kThreadKind;

  using KernelObject::KernelObject;

  /// Returns WaitForSingleObject's result; with WAIT_FAILED the last error is set.
  DWORD wait(const Deadline& deadline);

  void close() override;

 protected:
  /// Returns whether the object is signalled, and consumes the signal as a wait does. Called with
  /// the mutex locked.
  virtual bool take() = 0;

  std::mutex mutex;
  /// Notified, under the mutex, whenever the result of take() may have changed.
  std::condition_variable changed;

 private:
  bool closed = false;  ///< guarded by mutex
};

}  // namespace coredll
