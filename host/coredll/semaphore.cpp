#include <windows.h>

#include "handle_table.h"
#include "last_error.h"
#include "waitable.h"

namespace coredll {
namespace {

class Semaphore : public Waitable {
 public:
  static constexpr unsigned kKinds = kSemaphoreKind;

  Semaphore(LONG initialCount, LONG maximumCount)
      : Waitable(kSemaphoreKind), count(initialCount), maximum(maximumCount) {}

  // Returns the previous count; a value below 0 when the release would exceed the maximum.
  LONG release(LONG releaseCount) {
    const std::lock_guard lock(mutex);
    if (releaseCount > maximum - count) return -1;
    const LONG before = count;
    count += releaseCount;
    changed.notify_all();
    return before;
  }

 protected:
  bool take() override {
    if (count == 0) return false;
    --count;
    return true;
  }

 private:
  LONG count;  // guarded by mutex
  const LONG maximum;
};

}  // namespace
}  // namespace coredll

HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG initialCount, LONG maximumCount,
                               LPCWSTR name) {
  if (name != nullptr || maximumCount < 1 || initialCount < 0 || initialCount > maximumCount) {
    return coredll::fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
  }
  return coredll::newHandle(nullptr, [&] {
    return coredll::handles().open(
        std::make_shared<coredll::Semaphore>(initialCount, maximumCount));
  });
}

BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG previousCount) {
  const auto released = coredll::objectOf<coredll::Semaphore>(semaphore);
  if (!released) return FALSE;
  if (releaseCount < 1) return coredll::fail(ERROR_INVALID_PARAMETER, FALSE);
  const LONG before = released->release(releaseCount);
  if (before < 0) return coredll::fail(ERROR_TOO_MANY_POSTS, FALSE);
  if (previousCount != nullptr) *previousCount = before;
  return TRUE;
}
