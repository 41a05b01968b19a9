#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "virtual/named_object.h"
#include "virtual/virtual_world.h"

namespace virtual_platform {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::AllOf;
using testing::Contains;

using Trace = std::vector<std::string>;

class Semaphore {
 public:
  explicit Semaphore(LONG count) : handle(CreateSemaphoreW(nullptr, count, 1, nullptr)) {}
  ~Semaphore() { CloseHandle(handle); }
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  const HANDLE handle;
};

// Two threads that take a semaphore in the order that the seed decides.
Trace contestedRun(std::uint64_t seed) {
  VirtualWorld world(seed);
  const Semaphore semaphore(1);
  const auto contend = [&semaphore] {
    for (int i = 0; i < 20; ++i) {
      WaitForSingleObject(semaphore.handle, INFINITE);
      ReleaseSemaphore(semaphore.handle, 1, nullptr);
    }
  };
  world.spawn(contend);
  EXPECT_EQ(world.run(contend), "");
  return world.trace();
}

TEST(VirtualWorld, WithTheSameSeedRunsTheSame) {
  const Trace first = contestedRun(7);
  EXPECT_GE(first.size(), 80u);
  EXPECT_EQ(first, contestedRun(7));
}

TEST(VirtualWorld, WithAnotherSeedRunsInAnotherOrder) {
  EXPECT_NE(contestedRun(7), contestedRun(8));
}

TEST(VirtualWorld, RecordsTheCallsOfThePlatform) {
  VirtualWorld world(1);
  EXPECT_EQ(world.run([] {
    const Semaphore semaphore(1);
    WaitForSingleObject(semaphore.handle, 20);
    PostMessageW(HWND_BROADCAST, WM_USER, 1, 2);
  }),
            "");
  EXPECT_EQ(world.trace(), (Trace{"1 host 1: CreateSemaphoreW(1, 1) = semaphore 1",
                                  "2 host 1: WaitForSingleObject(semaphore 1, 20) = 0",
                                  "2 host 1: PostMessageW(0xffff, 0x400, 1, 2)",
                                  "3 host 1: CloseHandle(semaphore 1)"}));
}

DWORD WINAPI setFlag(LPVOID flag) {
  *static_cast<bool*>(flag) = true;
  return 0;
}

// Returns for each of some seeds whether the other thread has run before the call that wakes it
// returned.
template <class Call>
std::vector<bool> runsBefore(Call call) {
  std::vector<bool> hasRun;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    VirtualWorld world(seed);
    EXPECT_EQ(world.run([&] { hasRun.push_back(call(world)); }), "");
  }
  return hasRun;
}

TEST(VirtualWorld, LetsANewThreadRunBeforeCreateThreadReturnsOrNot) {
  const auto hasRun = runsBefore([](VirtualWorld&) {
    bool flag = false;
    const HANDLE thread = CreateThread(nullptr, 0, setFlag, &flag, 0, nullptr);
    const bool wasSet = flag;
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    return wasSet;
  });
  EXPECT_THAT(hasRun, AllOf(Contains(true), Contains(false)));
}

TEST(VirtualWorld, LetsAWokenThreadRunBeforeReleaseSemaphoreReturnsOrNot) {
  const auto hasRun = runsBefore([](VirtualWorld& world) {
    const Semaphore semaphore(0);
    bool isWoken = false;
    world.spawn([&] {
      WaitForSingleObject(semaphore.handle, INFINITE);
      isWoken = true;
    });
    Sleep(10);
    ReleaseSemaphore(semaphore.handle, 1, nullptr);
    const bool wasWoken = isWoken;
    Sleep(10);
    return wasWoken;
  });
  EXPECT_THAT(hasRun, AllOf(Contains(true), Contains(false)));
}

TEST(VirtualWorld, CallsAWatcherBeforeEachCall) {
  VirtualWorld world(1);
  int value = 0;
  int known = 0;
  world.watch([&] {
    if (value == known) return;
    known = value;
    world.note("changes " + std::to_string(value));
  });
  EXPECT_EQ(world.run([&] {
    value = 1;
    Sleep(1);
    value = 2;
    PostMessageW(HWND_BROADCAST, WM_USER, 1, 2);
  }),
            "");
  EXPECT_EQ(world.trace(),
            (Trace{"0 host 1: changes 1", "1001 host 1: Sleep(1)", "1001 host 1: changes 2",
                   "1001 host 1: PostMessageW(0xffff, 0x400, 1, 2)"}));
}

TEST(VirtualWorld, ShowsAHandleByTheNameThatItWasGiven) {
  const Semaphore semaphore(1);
  nameHandle(semaphore.handle, "the door");
  VirtualWorld world(1);
  EXPECT_EQ(world.run([&] { WaitForSingleObject(semaphore.handle, 20); }), "");
  EXPECT_EQ(world.trace(), (Trace{"1 host 1: WaitForSingleObject(the door, 20) = 0"}));
}

TEST(VirtualWorld, WaitsAnHourInNoTime) {
  VirtualWorld world(1);
  const auto start = std::chrono::steady_clock::now();
  DWORD result = WAIT_OBJECT_0;
  EXPECT_EQ(world.run([&] {
    const Semaphore semaphore(0);
    result = WaitForSingleObject(semaphore.handle, 3600000);
  }),
            "");
  EXPECT_EQ(result, WAIT_TIMEOUT);
  EXPECT_GE(world.now(), seconds(3600));
  EXPECT_LT(world.now(), seconds(3600) + milliseconds(1));
  EXPECT_LT(std::chrono::steady_clock::now() - start, seconds(5));
}

TEST(VirtualWorld, WakesSleepersInTheOrderOfTheirTimes) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    VirtualWorld world(seed);
    std::vector<DWORD> woken;
    for (const DWORD time : {30u, 10u, 20u}) {
      world.spawn([&woken, time] {
        Sleep(time);
        woken.push_back(time);
      });
    }
    EXPECT_EQ(world.run([] {}), "");
    EXPECT_EQ(woken, (std::vector<DWORD>{10, 20, 30})) << seed;
  }
}

TEST(VirtualWorld, LetsTimePassInCallsThatDoNotWait) {
  VirtualWorld world(1);
  bool isOver = false;
  world.spawn([&] {
    Sleep(50);
    isOver = true;
  });
  EXPECT_EQ(world.run([&] {
    while (!isOver)
      Sleep(0);
  }),
            "");
}

TEST(VirtualWorld, ReportsThreadsThatNobodyCanWake) {
  const unsigned before = deskOpenHandles();
  const Semaphore semaphore(0);
  VirtualWorld world(1);
  EXPECT_EQ(world.run([&] { WaitForSingleObject(semaphore.handle, INFINITE); }),
            "threads that do not end: host 1 in WaitForSingleObject(semaphore 1, 4294967295);");
  EXPECT_EQ(deskOpenHandles(), before + 1);
}

DWORD WINAPI sleepForAMonth(LPVOID) {
  Sleep(30u * 24 * 3600 * 1000);
  return 0;
}

TEST(VirtualWorld, GivesUpThreadsOfTheLibraryThatOutliveTheHost) {
  HANDLE thread = nullptr;
  VirtualWorld world(1);
  EXPECT_EQ(world.run([&] {
    thread = CreateThread(nullptr, 0, sleepForAMonth, nullptr, 0, nullptr);
    EXPECT_EQ(deskRunningThreads(), 1u);
  }),
            "threads that do not end: library 1 in Sleep(2592000000);");
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0) << "it does not run any more";
  EXPECT_TRUE(CloseHandle(thread));
}

TEST(VirtualWorld, HoldsAThreadInItsCallUntilItIsResumed) {
  VirtualWorld world(1);
  int calls = 0;
  world.spawn([&] {
    world.threads().holdAfter(2);
    for (; calls < 5; ++calls)
      Sleep(0);
  });
  EXPECT_EQ(world.run([&] {
    Sleep(10);
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(world.threads().resume());
    Sleep(10);
    EXPECT_EQ(calls, 5);
    EXPECT_FALSE(world.threads().resume());
  }),
            "");
}

DWORD WINAPI countCalls(LPVOID calls) {
  for (int i = 0; i < 6; ++i) {
    Sleep(0);
    ++*static_cast<int*>(calls);
  }
  return 0;
}

TEST(VirtualWorld, PreemptsAThreadUntilNoOtherCanRun) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    VirtualWorld world(seed);
    int calls = 0;
    EXPECT_EQ(world.run([&] {
      world.threads().preemptAfter(Owner::kLibrary, 3);
      const HANDLE thread = CreateThread(nullptr, 0, countCalls, &calls, 0, nullptr);
      for (int i = 0; i < 100; ++i)
        Sleep(0);
      EXPECT_EQ(calls, 3) << seed;
      WaitForSingleObject(thread, INFINITE);
      EXPECT_EQ(calls, 6) << seed;
      CloseHandle(thread);
    }),
              "");
  }
}

TEST(VirtualWorld, ResumesAHeldThreadWhenNobodyElseCanEverRun) {
  const Semaphore semaphore(0);
  VirtualWorld world(1);
  world.spawn([&] {
    world.threads().holdAfter(0);
    ReleaseSemaphore(semaphore.handle, 1, nullptr);
  });
  EXPECT_EQ(
      world.run([&] { EXPECT_EQ(WaitForSingleObject(semaphore.handle, INFINITE), WAIT_OBJECT_0); }),
      "");
}

DWORD WINAPI releaseThreeTimes(LPVOID semaphore) {
  for (int i = 0; i < 3; ++i)
    ReleaseSemaphore(semaphore, 1, nullptr);
  return 0;
}

TEST(VirtualWorld, EndsAThreadOfTheLibraryInTheMiddleOfItsWork) {
  const unsigned before = deskOpenHandles();
  VirtualWorld world(1);
  EXPECT_EQ(world.run([&] {
    const HANDLE semaphore = CreateSemaphoreW(nullptr, 0, 3, nullptr);
    world.threads().killAfter(2);
    const HANDLE thread = CreateThread(nullptr, 0, releaseThreeTimes, semaphore, 0, nullptr);
    EXPECT_TRUE(world.threads().isToKill());
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_FALSE(world.threads().isToKill());
    EXPECT_EQ(deskRunningThreads(), 0u);
    LONG count = 0;
    ReleaseSemaphore(semaphore, 1, &count);
    EXPECT_EQ(count, 2);
    CloseHandle(thread);
    CloseHandle(semaphore);
  }),
            "");
  EXPECT_EQ(deskOpenHandles(), before);
}

TEST(VirtualWorld, ReportsALoopOfCallsWithoutAnEnd) {
  VirtualWorld world(1);
  EXPECT_EQ(world.run([] {
    for (;;)
      Sleep(0);
  }),
            "calls without an end: host 1 runs;");
}

TEST(OutsideOfAWorld, AWaitThatWouldHaveToWaitFails) {
  const Semaphore semaphore(1);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, 1000), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForSingleObject(semaphore.handle, INFINITE), WAIT_FAILED);
}

TEST(CloseHandle, EndsTheWaitsForASemaphore) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    VirtualWorld world(seed);
    const HANDLE semaphore = CreateSemaphoreW(nullptr, 0, 1, nullptr);
    std::vector<std::pair<DWORD, DWORD>> results;
    for (int i = 0; i < 2; ++i) {
      world.spawn([&] {
        const DWORD result = WaitForSingleObject(semaphore, INFINITE);
        results.emplace_back(result, GetLastError());
      });
    }
    EXPECT_EQ(world.run([semaphore] {
      Sleep(10);
      CloseHandle(semaphore);
    }),
              "");
    const std::pair<DWORD, DWORD> refused(WAIT_FAILED, ERROR_INVALID_HANDLE);
    EXPECT_EQ(results, (std::vector{refused, refused})) << seed;
  }
}

}  // namespace
}  // namespace virtual_platform
