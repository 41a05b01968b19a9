// What happens to threads and open handles when the process ends: nothing that can be noticed.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>

#include "host/device_calls.h"
#include "host/pty_pair.h"

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

TEST(ProcessDeathTest, EndsCleanlyWhileThreadsUseThePlatform) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const PtyPair wire;
  EXPECT_EXIT(endWithEverythingOpen(wire), testing::ExitedWithCode(7), "");
}

}  // namespace
