#include <gtest/gtest.h>
#include <windows.h>

#include <thread>

namespace {

TEST(InterlockedCompareExchange, StoresIfTheTargetEqualsTheComparand) {
  LONG target = 5;
  EXPECT_EQ(InterlockedCompareExchange(&target, 7, 5), 5);
  EXPECT_EQ(target, 7);
}

TEST(InterlockedCompareExchange, DoesNotChangeATargetWithAnotherValue) {
  LONG target = 5;
  EXPECT_EQ(InterlockedCompareExchange(&target, 7, 6), 5);
  EXPECT_EQ(target, 5);
}

TEST(InterlockedCompareExchange, LosesNoIncrementOfConcurrentThreads) {
  constexpr LONG kRounds = 20000;
  LONG volatile target = 0;
  const auto increment = [&] {
    for (LONG done = 0; done < kRounds;) {
      const LONG seen = InterlockedCompareExchange(&target, 0, 0);
      if (InterlockedCompareExchange(&target, seen + 1, seen) == seen) ++done;
    }
  };
  std::thread first(increment);
  std::thread second(increment);
  first.join();
  second.join();
  EXPECT_EQ(target, 2 * kRounds);
}

}  // namespace
