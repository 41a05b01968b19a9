#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <ostream>

namespace {

constexpr DWORD kDeadline = 10000;  // milliseconds
using Clock = std::chrono::steady_clock;

class Semaphore {
 public:
  Semaphore(LONG initialCount, LONG maximumCount)
      : handle(CreateSemaphoreW(nullptr, initialCount, maximumCount, nullptr)) {}
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;
  ~Semaphore() { CloseHandle(handle); }

  const HANDLE handle;
};

HANDLE startThread(LPTHREAD_START_ROUTINE start, LPVOID parameter) {
  return CreateThread(nullptr, 0, start, parameter, 0, nullptr);
}

TEST(CreateSemaphoreW, HasTheInitialCount) {
  const Semaphore semaphore(2, 5);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_TIMEOUT);
}

TEST(CreateSemaphoreW, CanStartWithCountZero) {
  const Semaphore semaphore(0, 1);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_TIMEOUT);
}

TEST(CreateSemaphoreW, GivesEachSemaphoreADifferentHandle) {
  const Semaphore first(1, 1);
  const Semaphore second(0, 1);
  EXPECT_NE(first.handle, second.handle);
  EXPECT_EQ(WaitForSingleObject(second.handle, 0), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForSingleObject(first.handle, 0), WAIT_OBJECT_0);
}

struct Counts {
  LONG initial;
  LONG maximum;
};

void PrintTo(const Counts& counts, std::ostream* out) {
  *out << counts.initial << " of " << counts.maximum;
}

class ImpossibleCounts : public testing::TestWithParam<Counts> {};

TEST_P(ImpossibleCounts, AreRefused) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(CreateSemaphoreW(nullptr, GetParam().initial, GetParam().maximum, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

INSTANTIATE_TEST_SUITE_P(CreateSemaphoreW, ImpossibleCounts,
                         testing::Values(Counts{0, 0}, Counts{0, -1}, Counts{-1, 1}, Counts{2, 1}));

TEST(ReleaseSemaphore, AddsToTheCountAndReturnsThePreviousCount) {
  const Semaphore semaphore(1, 5);
  LONG before = -1;
  EXPECT_TRUE(ReleaseSemaphore(semaphore.handle, 3, &before));
  EXPECT_EQ(before, 1);
  EXPECT_TRUE(ReleaseSemaphore(semaphore.handle, 1, &before));
  EXPECT_EQ(before, 4);
}

TEST(ReleaseSemaphore, AcceptsNullForThePreviousCount) {
  const Semaphore semaphore(0, 1);
  EXPECT_TRUE(ReleaseSemaphore(semaphore.handle, 1, nullptr));
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_OBJECT_0);
}

TEST(ReleaseSemaphore, BeyondTheMaximumFailsAndChangesNothing) {
  const Semaphore semaphore(1, 1);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReleaseSemaphore(semaphore.handle, 1, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_TIMEOUT);
}

TEST(ReleaseSemaphore, ThatOnlyPartlyFitsAddsNothing) {
  const Semaphore semaphore(1, 3);
  EXPECT_FALSE(ReleaseSemaphore(semaphore.handle, 3, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
  LONG before = -1;
  EXPECT_TRUE(ReleaseSemaphore(semaphore.handle, 2, &before));
  EXPECT_EQ(before, 1);
}

TEST(ReleaseSemaphore, OfTheGreatestCountDoesNotWrapAround) {
  const Semaphore semaphore(1, 0x7fffffff);
  EXPECT_FALSE(ReleaseSemaphore(semaphore.handle, 0x7fffffff, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_POSTS);
  EXPECT_TRUE(ReleaseSemaphore(semaphore.handle, 0x7ffffffe, nullptr));
}

TEST(ReleaseSemaphore, RefusesCountsBelowOne) {
  const Semaphore semaphore(0, 1);
  for (const LONG count : {0, -1}) {
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(ReleaseSemaphore(semaphore.handle, count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
  }
}

/// Waits 50 ms.
TEST(WaitForSingleObject, TimesOutNoSoonerThanAsked) {
  const Semaphore semaphore(0, 1);
  const auto start = Clock::now();
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 50), WAIT_TIMEOUT);
  const auto waited = Clock::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(50));
  EXPECT_LT(waited, std::chrono::seconds(5));
}

TEST(WaitForSingleObject, OfZeroMillisecondsDoesNotWait) {
  const Semaphore semaphore(0, 1);
  const auto start = Clock::now();
  for (int i = 0; i < 10000; ++i) {
    ASSERT_EQ(WaitForSingleObject(semaphore.handle, 0), WAIT_TIMEOUT);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5)) << "for 10000 waits";
}

DWORD WINAPI releaseOnce(LPVOID semaphore) {
  ReleaseSemaphore(static_cast<HANDLE>(semaphore), 1, nullptr);
  return 0;
}

TEST(WaitForSingleObject, EndsWhenAnotherThreadReleases) {
  const Semaphore semaphore(0, 1);
  const HANDLE thread = startThread(releaseOnce, semaphore.handle);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, kDeadline), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_TRUE(CloseHandle(thread));
}

/// Two semaphores and threads that each take 1 from the first one and add it to the second one.
struct Relay {
  Semaphore from{0, 64};
  Semaphore to{0, 64};
};

DWORD WINAPI passOne(LPVOID parameter) {
  auto& relay = *static_cast<Relay*>(parameter);
  if (WaitForSingleObject(relay.from.handle, INFINITE) != WAIT_OBJECT_0) return 1;
  ReleaseSemaphore(relay.to.handle, 1, nullptr);
  return 0;
}

TEST(WaitForSingleObject, WithoutLimitEndsForOneThreadPerCount) {
  Relay relay;
  HANDLE threads[8] = {};
  for (HANDLE& thread : threads)
    thread = startThread(passOne, &relay);
  EXPECT_TRUE(ReleaseSemaphore(relay.from.handle, 3, nullptr));
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(WaitForSingleObject(relay.to.handle, kDeadline), WAIT_OBJECT_0);
  }
  EXPECT_EQ(WaitForSingleObject(relay.to.handle, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(ReleaseSemaphore(relay.from.handle, 5, nullptr));
  for (const HANDLE thread : threads) {
    EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
  }
}

/// Passes one count to and fro.
DWORD WINAPI returnEveryCount(LPVOID parameter) {
  auto& relay = *static_cast<Relay*>(parameter);
  for (int i = 0; i < 5000; ++i) {
    if (WaitForSingleObject(relay.from.handle, INFINITE) != WAIT_OBJECT_0) return 1;
    ReleaseSemaphore(relay.to.handle, 1, nullptr);
  }
  return 0;
}

TEST(WaitForSingleObject, NoticesEveryReleaseOfTheOtherThread) {
  Relay relay;
  const HANDLE thread = startThread(returnEveryCount, &relay);
  for (int i = 0; i < 5000; ++i) {
    EXPECT_TRUE(ReleaseSemaphore(relay.from.handle, 1, nullptr));
    ASSERT_EQ(WaitForSingleObject(relay.to.handle, kDeadline), WAIT_OBJECT_0);
  }
  EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
  EXPECT_TRUE(CloseHandle(thread));
}

/// Counts that threads take while they are added.
struct Harvest {
  Semaphore counts{0, 150000};
  std::atomic<bool> isOver{false};
  std::atomic<int> taken{0};
};

DWORD WINAPI takeWithShortWaits(LPVOID parameter) {
  auto& harvest = *static_cast<Harvest*>(parameter);
  while (!harvest.isOver) {
    if (WaitForSingleObject(harvest.counts.handle, 1) == WAIT_OBJECT_0) ++harvest.taken;
  }
  return 0;
}

TEST(WaitForSingleObject, TakesEachCountOnce) {
  Harvest harvest;
  HANDLE threads[3] = {};
  for (HANDLE& thread : threads)
    thread = startThread(takeWithShortWaits, &harvest);
  for (int i = 0; i < 150000; ++i)
    ReleaseSemaphore(harvest.counts.handle, 1, nullptr);
  harvest.isOver = true;
  for (const HANDLE thread : threads) {
    EXPECT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
  }
  int left = 0;
  while (WaitForSingleObject(harvest.counts.handle, 0) == WAIT_OBJECT_0)
    ++left;
  EXPECT_EQ(harvest.taken + left, 150000);
}

struct GuardedNumber {
  Semaphore guard{1, 1};
  int number = 0;
};

DWORD WINAPI countToThousand(LPVOID parameter) {
  auto& guarded = *static_cast<GuardedNumber*>(parameter);
  for (int i = 0; i < 1000; ++i) {
    WaitForSingleObject(guarded.guard.handle, INFINITE);
    ++guarded.number;
    ReleaseSemaphore(guarded.guard.handle, 1, nullptr);
  }
  return 0;
}

TEST(BinarySemaphore, ProtectsWhatThreadsShare) {
  GuardedNumber guarded;
  HANDLE threads[4] = {};
  for (HANDLE& thread : threads)
    thread = startThread(countToThousand, &guarded);
  for (const HANDLE thread : threads) {
    ASSERT_EQ(WaitForSingleObject(thread, kDeadline), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
  }
  EXPECT_EQ(guarded.number, 4000);
}

TEST(CloseHandle, ClosesASemaphoreOnce) {
  const HANDLE semaphore = CreateSemaphoreW(nullptr, 1, 1, nullptr);
  EXPECT_TRUE(CloseHandle(semaphore));
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(CloseHandle(semaphore));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(ClosedSemaphore, CanNeitherBeWaitedForNorReleased) {
  const HANDLE semaphore = CreateSemaphoreW(nullptr, 1, 2, nullptr);
  EXPECT_TRUE(CloseHandle(semaphore));
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(WaitForSingleObject(semaphore, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReleaseSemaphore(semaphore, 1, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(NullHandle, IsNotAHandle) {
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(CloseHandle(nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  SetLastError(ERROR_SUCCESS);
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
  SetLastError(ERROR_SUCCESS);
  EXPECT_FALSE(ReleaseSemaphore(nullptr, 1, nullptr));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
