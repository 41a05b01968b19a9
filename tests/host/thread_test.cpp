#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <chrono>

namespace thread {
namespace {

constexpr DWORD kDeadline = 10000;  // milliseconds
using Clock = std::chrono::steady_clock;

HANDLE startThread(LPTHREAD_START_ROUTINE start, LPVOID parameter) {
  return CreateThread(nullptr, 0, start, parameter, 0, nullptr);
}

DWORD WINAPI storeOne(LPVOID number) {
  *static_cast<int*>(number) = 1;
  return 0;
}

TEST(CreateThread, RunsTheFunctionWithItsParameter) {
  int number = 0;
  const HANDLE thread = startThread(storeOne, &number);
  ASSERT_NE(thread, nullptr);
  ASSERT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_EQ(number, 1);
  EXPECT_TRUE(CloseHandle(thread));
}

DWORD WINAPI doNothing(LPVOID) { return 0; }

TEST(CreateThread, GivesEachRunningThreadADifferentId) {
  DWORD first = 0;
  DWORD second = 0;
  const HANDLE threads[] = {CreateThread(nullptr, 0, doNothing, nullptr, 0, &first),
                            CreateThread(nullptr, 0, doNothing, nullptr, 0, &second)};
  EXPECT_NE(first, 0u);
  EXPECT_NE(second, 0u);
  EXPECT_NE(first, second);
  for (const HANDLE thread : threads) {
    EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
  }
}

/// A thread that runs until its end is requested, and records its end.
struct Errand {
  HANDLE mayEnd = CreateSemaphoreW(nullptr, 0, 1, nullptr);
  HANDLE ending = CreateSemaphoreW(nullptr, 0, 1, nullptr);

  Errand() = default;
  Errand(const Errand&) = delete;
  Errand& operator=(const Errand&) = delete;
  ~Errand() {
    CloseHandle(mayEnd);
    CloseHandle(ending);
  }
};

DWORD WINAPI runErrand(LPVOID parameter) {
  const auto& errand = *static_cast<Errand*>(parameter);
  WaitForSingleObject(errand.mayEnd, INFINITE);
  ReleaseSemaphore(errand.ending, 1, nullptr);
  return 0;
}

/// Waits 20 ms.
TEST(ThreadHandle, IsSignalledWhenTheThreadHasEndedAndStaysSo) {
  Errand errand;
  const HANDLE thread = startThread(runErrand, &errand);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
  EXPECT_TRUE(ReleaseSemaphore(errand.mayEnd, 1, nullptr));
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(errand.ending, 0), WAIT_OBJECT_0);
  EXPECT_TRUE(CloseHandle(thread));
}

DWORD WINAPI waitForThread(LPVOID thread) {
  return WaitForSingleObject(static_cast<HANDLE>(thread), INFINITE);
}

TEST(ThreadHandle, ReleasesEveryThreadThatWaitsForIt) {
  Errand errand;
  const HANDLE thread = startThread(runErrand, &errand);
  HANDLE waiters[4] = {};
  for (HANDLE& waiter : waiters)
    waiter = startThread(waitForThread, thread);
  EXPECT_TRUE(ReleaseSemaphore(errand.mayEnd, 1, nullptr));
  for (const HANDLE waiter : waiters) {
    EXPECT_EQ(WaitForSingleObject(waiter, kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(waiter));
  }
  EXPECT_TRUE(CloseHandle(thread));
}

TEST(ThreadHandle, ClosedBeforeTheEndDoesNotEndTheThread) {
  Errand errand;
  const HANDLE thread = startThread(runErrand, &errand);
  EXPECT_TRUE(CloseHandle(thread));
  EXPECT_TRUE(ReleaseSemaphore(errand.mayEnd, 1, nullptr));
  EXPECT_EQ(WaitForSingleObject(errand.ending, kDeadline), WAIT_OBJECT_0);
}

TEST(ThreadHandle, ClosesOnce) {
  const HANDLE thread = startThread(doNothing, nullptr);
  EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_TRUE(CloseHandle(thread));
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(CloseHandle(thread));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(ThreadHandle, IsNotASemaphore) {
  const HANDLE thread = startThread(doNothing, nullptr);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReleaseSemaphore(thread, 1, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_TRUE(CloseHandle(thread));
}

/// Its destructor takes some time, so that a signal before its end is noticed.
struct SlowFarewell {
  std::atomic<bool>* done = nullptr;

  ~SlowFarewell() {
    if (done == nullptr) return;
    Sleep(50);
    *done = true;
  }
};

DWORD WINAPI leaveFarewell(LPVOID done) {
  thread_local SlowFarewell farewell;
  farewell.done = static_cast<std::atomic<bool>*>(done);
  return 0;
}

/// Waits 50 ms.
TEST(ThreadHandle, IsSignalledAfterTheThreadsOwnObjectsAreGone) {
  std::atomic<bool> done{false};
  const HANDLE thread = startThread(leaveFarewell, &done);
  ASSERT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_TRUE(done);
  EXPECT_TRUE(CloseHandle(thread));
}

struct LastErrors {
  DWORD atStart = MAXDWORD;
  DWORD own = MAXDWORD;
};

DWORD WINAPI setOwnLastError(LPVOID parameter) {
  auto& errors = *static_cast<LastErrors*>(parameter);
  errors.atStart = GetLastError();
  SetLastError(ERROR_GEN_FAILURE);
  errors.own = GetLastError();
  return 0;
}

TEST(LastError, BelongsToTheThread) {
  LastErrors errors;
  SetLastError(ERROR_SHARING_VIOLATION);
  const HANDLE thread = startThread(setOwnLastError, &errors);
  ASSERT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_EQ(errors.atStart, ERROR_SUCCESS);
  EXPECT_EQ(errors.own, ERROR_GEN_FAILURE);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(CloseHandle(thread));
}

TEST(LastError, IsTheOneSetLast) {
  SetLastError(ERROR_ACCESS_DENIED);
  SetLastError(ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

/// Sleeps 1 ms, 20 times.
TEST(Sleep, LastsAtLeastAsLongAsAsked) {
  for (int i = 0; i < 20; ++i) {
    const auto start = Clock::now();
    Sleep(1);
    const auto slept = Clock::now() - start;
    ASSERT_GE(slept, std::chrono::milliseconds(1));
    ASSERT_LT(slept, std::chrono::seconds(5));
  }
}

TEST(Sleep, OfZeroMillisecondsReturnsAtOnce) {
  const auto start = Clock::now();
  for (int i = 0; i < 100; ++i)
    Sleep(0);
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace thread
