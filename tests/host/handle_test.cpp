// What the Linux host's platform promises about handles in addition to every Windows.
#include <desk.h>
#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <ostream>
#include <set>
#include <thread>
#include <utility>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;

HANDLE newSemaphore(LONG initialCount = 0) {
  return CreateSemaphoreW(nullptr, initialCount, 1, nullptr);
}

struct BadHandleRow {
  const char* name;
  HANDLE handle;
};

void PrintTo(const BadHandleRow& row, std::ostream* out) { *out << row.name; }

class BadHandle : public testing::TestWithParam<BadHandleRow> {};

TEST_P(BadHandle, IsRefusedByEveryFunction) {
  const HANDLE bad = GetParam().handle;
  BYTE byte = 0;
  DWORD moved = 1;
  DCB state = {};
  COMMTIMEOUTS timeouts = {};
  const auto isRefused = [](auto failed) {
    const bool isInvalid = GetLastError() == ERROR_INVALID_HANDLE;
    SetLastError(ERROR_SUCCESS);
    return failed && isInvalid;
  };
  SetLastError(ERROR_SUCCESS);
  EXPECT_TRUE(isRefused(!CloseHandle(bad)));
  EXPECT_TRUE(isRefused(WaitForSingleObject(bad, 0) == WAIT_FAILED));
  EXPECT_TRUE(isRefused(!ReleaseSemaphore(bad, 1, nullptr)));
  EXPECT_TRUE(isRefused(!ReadFile(bad, &byte, 1, &moved, nullptr)));
  EXPECT_EQ(moved, 0u);
  EXPECT_TRUE(isRefused(!WriteFile(bad, &byte, 1, &moved, nullptr)));
  EXPECT_TRUE(isRefused(!FlushFileBuffers(bad)));
  EXPECT_TRUE(isRefused(!GetCommState(bad, &state)));
  EXPECT_TRUE(isRefused(!SetCommState(bad, &state)));
  EXPECT_TRUE(isRefused(!GetCommTimeouts(bad, &timeouts)));
  EXPECT_TRUE(isRefused(!SetCommTimeouts(bad, &timeouts)));
}

INSTANTIATE_TEST_SUITE_P(Handle, BadHandle,
                         testing::Values(BadHandleRow{"Null", nullptr},
                                         BadHandleRow{"Invalid", INVALID_HANDLE_VALUE},
                                         BadHandleRow{"One", HOST_HANDLE(1)},
                                         BadHandleRow{"NeverMade", HOST_HANDLE(0x7ffffffc)}));

TEST(SemaphoreHandle, IsNotADevice) {
  const OwnedHandle semaphore(newSemaphore(1));
  EXPECT_EQ(host_test::readDevice(semaphore.get(), 1), host_test::failure(ERROR_INVALID_HANDLE));
  EXPECT_EQ(host_test::writeDevice(semaphore.get(), {1}), host_test::failure(ERROR_INVALID_HANDLE));
  EXPECT_FALSE(FlushFileBuffers(semaphore.get()));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(WaitForSingleObject(semaphore.get(), 0), WAIT_OBJECT_0);
}

TEST(DeviceHandle, CannotBeWaitedForOrReleased) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(WaitForSingleObject(device.get(), 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReleaseSemaphore(device.get(), 1, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(StaleHandle, NeverRefersToALaterObject) {
  std::set<HANDLE> values;
  for (int i = 0; i < 20000; ++i) {
    const HANDLE semaphore = newSemaphore();
    EXPECT_TRUE(CloseHandle(semaphore));
    values.insert(semaphore);
  }
  EXPECT_EQ(values.size(), 20000u);
}

TEST(StaleHandle, IsRefusedWhileLaterObjectsAreOpen) {
  const HANDLE stale = newSemaphore(1);
  EXPECT_TRUE(CloseHandle(stale));
  const OwnedHandle later(newSemaphore(1));
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(WaitForSingleObject(stale, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_FALSE(CloseHandle(stale));
  EXPECT_EQ(WaitForSingleObject(later.get(), 0), WAIT_OBJECT_0);
}

/// Another thread waits again and again with handles that are being closed or were closed.
TEST(StaleHandle, ReachesNoLaterObjectWhileItIsUsed) {
  std::atomic<HANDLE> shared{nullptr};
  std::atomic<bool> isOver{false};
  std::atomic<int> waits{0};
  BackgroundCall user([&] {
    for (; !isOver; ++waits)
      WaitForSingleObject(shared, 0);
    return true;
  });
  int lost = 0;
  const host_test::Patience patience;
  for (int round = 0; (round < 20000 || waits < 20000) && !patience.isOver(); ++round) {
    OwnedHandle known(newSemaphore(1));
    shared = known.get();
    EXPECT_TRUE(known.close());
    const OwnedHandle unknown(newSemaphore(1));
    for (int i = 0; i < 10; ++i) {
      if (WaitForSingleObject(unknown.get(), 0) != WAIT_OBJECT_0) ++lost;
      ReleaseSemaphore(unknown.get(), 1, nullptr);
    }
  }
  isOver = true;
  EXPECT_TRUE(user.result());
  EXPECT_FALSE(patience.isOver());
  EXPECT_EQ(lost, 0);
}

TEST(Handle, IsRefusedWhenTooManyAreOpen) {
  constexpr std::size_t kMost = 65535;
  std::set<HANDLE> open;
  while (const HANDLE semaphore = newSemaphore(1)) {
    ASSERT_TRUE(open.insert(semaphore).second);
    ASSERT_LE(open.size(), kMost);
  }
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  // With 32 bits the tests before this one can have used up a few places of handles.
  EXPECT_GE(deskOpenHandles(), kMost - 10);
  for (const HANDLE semaphore : open) {
    EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(semaphore));
  }
  EXPECT_TRUE(OwnedHandle(newSemaphore()).isOpen());
}

// The emulator and ThreadSanitizer make other system calls.
#if !defined(TEST_EMULATOR) && !defined(__SANITIZE_THREAD__)
/// From here on the kernel kills the thread that makes a system call, except for exit.
void forbidSystemCalls() { prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT); }

TEST(Semaphore, MakesNoSystemCallWhileNobodyWaits) {
  const OwnedHandle semaphore(newSemaphore(1));
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    forbidSystemCalls();
    const bool isTaken = WaitForSingleObject(semaphore.get(), INFINITE) == WAIT_OBJECT_0 &&
                         WaitForSingleObject(semaphore.get(), 0) == WAIT_TIMEOUT;
    const bool isReleased = ReleaseSemaphore(semaphore.get(), 1, nullptr) != FALSE &&
                            ReleaseSemaphore(semaphore.get(), 1, nullptr) == FALSE;
    const bool isTakenInTime = WaitForSingleObject(semaphore.get(), 1000) == WAIT_OBJECT_0;
    syscall(SYS_exit, isTaken && isReleased && isTakenInTime ? 0 : 1);
  }
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}
#endif

TEST(CloseHandle, EndsTheWaitsForASemaphore) {
  OwnedHandle semaphore(newSemaphore());
  const HANDLE handle = semaphore.get();
  std::atomic<int> waiting{0};
  const auto wait = [&waiting, handle] {
    ++waiting;
    const DWORD result = WaitForSingleObject(handle, INFINITE);
    return std::pair(result, GetLastError());
  };
  BackgroundCall first(wait);
  BackgroundCall second(wait);
  while (waiting < 2)
    std::this_thread::yield();
  EXPECT_TRUE(semaphore.close());
  const std::pair<DWORD, DWORD> refused(WAIT_FAILED, ERROR_INVALID_HANDLE);
  EXPECT_EQ(first.result(), refused);
  EXPECT_EQ(second.result(), refused);
}

DWORD WINAPI waitForSemaphore(LPVOID semaphore) {
  return WaitForSingleObject(static_cast<HANDLE>(semaphore), INFINITE);
}

TEST(CloseHandle, EndsTheWaitsForAThreadButNotTheThread) {
  const OwnedHandle mayEnd(newSemaphore());
  OwnedHandle thread(CreateThread(nullptr, 0, waitForSemaphore, mayEnd.get(), 0, nullptr));
  BackgroundCall wait([handle = thread.get()] { return WaitForSingleObject(handle, INFINITE); });
  EXPECT_TRUE(thread.close());
  EXPECT_EQ(wait.result(), WAIT_FAILED);
  EXPECT_EQ(deskRunningThreads(), 1u);
  EXPECT_TRUE(ReleaseSemaphore(mayEnd.get(), 1, nullptr));
  for (const host_test::Patience patience; deskRunningThreads() != 0;) {
    ASSERT_FALSE(patience.isOver());
    std::this_thread::yield();
  }
}

/// If a handle is used while it is closed, each use either works or is refused.
TEST(CloseHandle, IsSafeAtAnyTimeOfOtherCalls) {
  for (int round = 0; round < 200; ++round) {
    OwnedHandle semaphore(newSemaphore(1));
    BackgroundCall user([handle = semaphore.get()] {
      while (WaitForSingleObject(handle, INFINITE) == WAIT_OBJECT_0) {
        ReleaseSemaphore(handle, 1, nullptr);
      }
      return GetLastError();
    });
    EXPECT_TRUE(semaphore.close());
    ASSERT_EQ(user.result(), ERROR_INVALID_HANDLE);
  }
}

TEST(OpenHandles, AreCounted) {
  const unsigned before = deskOpenHandles();
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  {
    const OwnedHandle semaphore(newSemaphore(1));
    EXPECT_EQ(deskOpenHandles(), before + 1);
    const OwnedHandle device(openDevice(u"IPD1:"));
    EXPECT_EQ(deskOpenHandles(), before + 2);
    const OwnedHandle thread(
        CreateThread(nullptr, 0, waitForSemaphore, semaphore.get(), 0, nullptr));
    EXPECT_EQ(deskOpenHandles(), before + 3);
    EXPECT_EQ(WaitForSingleObject(thread.get(), INFINITE), WAIT_OBJECT_0);
  }
  EXPECT_EQ(deskOpenHandles(), before);
}

TEST(RunningThreads, AreCountedUntilTheirHandlesAreSignalled) {
  const OwnedHandle mayEnd(newSemaphore());
  const OwnedHandle thread(CreateThread(nullptr, 0, waitForSemaphore, mayEnd.get(), 0, nullptr));
  EXPECT_EQ(deskRunningThreads(), 1u);
  EXPECT_TRUE(ReleaseSemaphore(mayEnd.get(), 1, nullptr));
  EXPECT_EQ(WaitForSingleObject(thread.get(), INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(deskRunningThreads(), 0u);
}

TEST(CreateSemaphoreW, RefusesANameBecauseNothingIsShared) {
  EXPECT_EQ(CreateSemaphoreW(nullptr, 1, 1, u"shared"), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(CreateThread, RefusesAMissingFunction) {
  const unsigned before = deskOpenHandles();
  EXPECT_EQ(CreateThread(nullptr, 0, nullptr, nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(deskOpenHandles(), before);
}

TEST(CreateThread, RefusesFlags) {
  constexpr DWORD kSuspended = 4;
  EXPECT_EQ(CreateThread(nullptr, 0, waitForSemaphore, nullptr, kSuspended, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(deskRunningThreads(), 0u);
}

TEST(DisableThreadLibraryCalls, ReturnsTrue) {
  static char thisModule;
  EXPECT_TRUE(DisableThreadLibraryCalls(&thisModule));
}

}  // namespace
