// The end of a process with running threads and open handles has no visible effect.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>

#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace {

using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::PtyPair;

HANDLE entered() {
  static const HANDLE semaphore = CreateSemaphoreW(nullptr, 0, 3, nullptr);
  return semaphore;
}

DWORD WINAPI waitForEver(LPVOID semaphore) {
  ReleaseSemaphore(entered(), 1, nullptr);
  return WaitForSingleObject(static_cast<HANDLE>(semaphore), INFINITE);
}

DWORD WINAPI readForEver(LPVOID device) {
  ReleaseSemaphore(entered(), 1, nullptr);
  return host_test::readDevice(static_cast<HANDLE>(device), 1).error;
}

DWORD WINAPI neverRest(LPVOID) {
  ReleaseSemaphore(entered(), 1, nullptr);
  for (;;)
    CloseHandle(CreateSemaphoreW(nullptr, 0, 1, nullptr));
}

void startAndWait(LPTHREAD_START_ROUTINE start, HANDLE parameter) {
  CreateThread(nullptr, 0, start, parameter, 0, nullptr);
  WaitForSingleObject(entered(), INFINITE);
}

[[noreturn]] void endWithEverythingOpen(const PtyPair& wire) {
  const DeviceMapping devices("IPD1:", wire);
  startAndWait(waitForEver, CreateSemaphoreW(nullptr, 0, 1, nullptr));
  startAndWait(readForEver, openDevice(u"IPD1:"));
  startAndWait(neverRest, nullptr);
  std::exit(7);
}

HANDLE handleForTheEnd = nullptr;

void useHandleAtTheEnd() {
  const bool isUsable = WaitForSingleObject(handleForTheEnd, 0) == WAIT_OBJECT_0;
  if (!isUsable || !CloseHandle(handleForTheEnd)) std::_Exit(1);
}

/// Exit handlers run in the opposite order of their registration. This one runs after all that the
/// platform may have registered at its first use.
[[noreturn]] void endWithALateUser() {
  std::atexit(useHandleAtTheEnd);
  handleForTheEnd = CreateSemaphoreW(nullptr, 1, 1, nullptr);
  std::exit(7);
}

class ProcessDeathTest : public testing::Test {
 protected:
  ProcessDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(ProcessDeathTest, EndsCleanlyWhileThreadsUseThePlatform) {
  const PtyPair wire;
  EXPECT_EXIT(endWithEverythingOpen(wire), testing::ExitedWithCode(7), "");
}

TEST_F(ProcessDeathTest, CanUseThePlatformInItsLastExitHandler) {
  EXPECT_EXIT(endWithALateUser(), testing::ExitedWithCode(7), "");
}

}  // namespace
