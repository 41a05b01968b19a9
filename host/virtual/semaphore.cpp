#include <windows.h>

#include "call.h"
#include "coredll/handle_table.h"
#include "failures.h"
#include "waiting.h"

namespace virtual_platform {

class Semaphore final : public Waitable {
 public:
  static constexpr unsigned kKinds = coredll::kSemaphoreKind;

  Semaphore(LONG initialCount, LONG maximumCount)
      : Waitable(coredll::kSemaphoreKind, "semaphore"),
        count(initialCount),
        maximum(maximumCount) {}

  // Returns the previous count; a value below 0 when the release would exceed the maximum.
  LONG release(LONG releaseCount) {
    beginCall();
    const LONG before = releaseCount > maximum - count ? -1 : count;
    if (before >= 0) count += releaseCount;
    meet();
    note([&] {
      return text("ReleaseSemaphore(%s, %d) from %d", name().c_str(), releaseCount, before);
    });
    yieldCall();
    return before;
  }

 protected:
  bool isSignalled() const override { return count > 0; }
  void take() override { --count; }

 private:
  LONG count;
  const LONG maximum;
};

namespace {

HANDLE createSemaphore(LONG initialCount, LONG maximumCount) {
  beginCall();
  static Failures& failures = failuresOf("CreateSemaphoreW");
  if (failures.strikesNext()) {
    note("CreateSemaphoreW() fails");
    return coredll::fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  }
  const auto semaphore = std::make_shared<Semaphore>(initialCount, maximumCount);
  semaphore->meet();
  note([&] {
    return text("CreateSemaphoreW(%d, %d) = %s", initialCount, maximumCount,
                semaphore->name().c_str());
  });
  return coredll::handles().open(semaphore);
}

}  // namespace
}  // namespace virtual_platform

HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG initialCount, LONG maximumCount,
                               LPCWSTR name) {
  if (name != nullptr || maximumCount < 1 || initialCount < 0 || initialCount > maximumCount) {
    return coredll::fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
  }
  return coredll::newHandle(
      nullptr, [&] { return virtual_platform::createSemaphore(initialCount, maximumCount); });
}

BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG previousCount) {
  const auto released = coredll::objectOf<virtual_platform::Semaphore>(semaphore);
  if (!released) return FALSE;
  if (releaseCount < 1) return coredll::fail(ERROR_INVALID_PARAMETER, FALSE);
  const LONG before = released->release(releaseCount);
  if (before < 0) return coredll::fail(ERROR_TOO_MANY_POSTS, FALSE);
  if (previousCount != nullptr) *previousCount = before;
  return TRUE;
}
