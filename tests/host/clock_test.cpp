#include "coredll/clock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace {

using coredll::Clock;
using coredll::Deadline;
using std::chrono::hours;
using std::chrono::milliseconds;

TEST(DeadlineIn, IsNoneWithoutALimitAndBeyondTheRangeOfTheClock) {
  EXPECT_EQ(coredll::deadlineIn(std::nullopt), std::nullopt);
  EXPECT_EQ(coredll::deadlineIn(std::numeric_limits<std::uint64_t>::max()), std::nullopt);
}

TEST(DeadlineIn, CountsFromNow) {
  const auto before = Clock::now();
  const Deadline deadline = coredll::deadlineIn(1000);
  const auto after = Clock::now();
  ASSERT_TRUE(deadline);
  EXPECT_GE(*deadline, before + milliseconds(1000));
  EXPECT_LE(*deadline, after + milliseconds(1000));
}

TEST(Earlier, ReturnsTheOnlyDeadline) {
  const Deadline soon = Clock::now();
  const Deadline late = *soon + hours(1);
  EXPECT_EQ(coredll::earlier(soon, late), soon);
  EXPECT_EQ(coredll::earlier(late, soon), soon);
  EXPECT_EQ(coredll::earlier(soon, std::nullopt), soon);
  EXPECT_EQ(coredll::earlier(std::nullopt, soon), soon);
  EXPECT_EQ(coredll::earlier(std::nullopt, std::nullopt), std::nullopt);
}

TEST(IsOver, FollowsTheClock) {
  EXPECT_TRUE(coredll::isOver(Clock::now()));
  EXPECT_FALSE(coredll::isOver(Clock::now() + hours(1)));
  EXPECT_FALSE(coredll::isOver(std::nullopt));
}

TEST(PollTimeout, HasTheUnitAndTheRoundingOfPoll) {
  EXPECT_EQ(coredll::pollTimeout(std::nullopt), -1);
  EXPECT_EQ(coredll::pollTimeout(Clock::now() - hours(1)), 0);
  EXPECT_EQ(coredll::pollTimeout(Clock::now() + hours(24 * 365)), std::numeric_limits<int>::max());
}

}  // namespace
