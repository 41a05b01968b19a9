#include <windows.h>

#include "handle_table.h"
#include "last_error.h"
#include "waitable.h"

namespace coredll {
namespace {

class Semaphore final : public Waitable {
 public:
  static constexpr unsigned kKinds = kSemaphoreKind;

  Semaphore(LONG initialCount, LONG maximumCount)
      : Waitable(kSemaphoreKind, initialCount, 1), maximum(maximumCount) {}

  /// Returns an error code of windows.h.
  DWORD release(LONG releaseCount, LONG& before) { return add(releaseCount, maximum, before); }

 private:
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
  LONG before = 0;
  const DWORD error = released->release(releaseCount, before);
  if (error == ERROR_SUCCESS && previousCount != nullptr) *previousCount = before;
  return coredll::report(error);
}
