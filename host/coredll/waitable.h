// An object that WaitForSingleObject can wait for.
#ifndef COREDLL_WAITABLE_H
#define COREDLL_WAITABLE_H

#include <windows.h>

#include <condition_variable>
#include <mutex>

#include "clock.h"
#include "kernel_object.h"

namespace coredll {

class Waitable : public KernelObject {
 public:
  // WaitForSingleObject's result; WAIT_FAILED comes with the last error set.
  DWORD wait(const Deadline& deadline);

  void close() override;

 protected:
  // Whether the object is signalled; takes what a wait takes. Called with the mutex locked.
  virtual bool take() = 0;

  std::mutex mutex;
  // Notified, under the mutex, whenever take() may have a new answer.
  std::condition_variable changed;

 private:
  bool closed = false;  // guarded by mutex
};

}  // namespace coredll

#endif
