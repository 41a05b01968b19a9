#include "support/last_words.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr const char* kWords = "the third try";

int deepen(const volatile int* above) {
  volatile int here[1024] = {*above + 1};
  if (here[0] == 0) return 0;
  return deepen(here) + here[0];
}

TEST(LastWordsDeathTest, ArePrintedForATestThatDoesNotEnd) {
  EXPECT_EXIT(
      {
        const LastWords words(kWords);
        raise(SIGALRM);
      },
      testing::KilledBySignal(SIGALRM), kWords);
}

TEST(LastWordsDeathTest, ArePrintedForAnAbort) {
  EXPECT_DEATH(
      {
        const LastWords words(kWords);
        std::abort();
      },
      kWords);
}

TEST(LastWordsDeathTest, ArePrintedForAStackOverflow) {
  EXPECT_DEATH(
      {
        const LastWords words(kWords);
        const int start = 0;
        std::exit(deepen(&start));
      },
      kWords);
}

#ifdef __SANITIZE_ADDRESS__
TEST(LastWordsDeathTest, ArePrintedForASanitizersReport) {
  EXPECT_DEATH(
      {
        const LastWords words(kWords);
        const std::vector<char> room(4);
        const volatile std::size_t beyond = room.size();
        std::exit(room.data()[beyond]);
      },
      kWords);
}
#endif

TEST(LastWordsDeathTest, NameOnlyTheCurrentTry) {
  EXPECT_EXIT(
      {
        { const LastWords over("the first try"); }
        const LastWords words(std::string(2000, 'x'));
        raise(SIGALRM);
      },
      testing::KilledBySignal(SIGALRM), "^\nx+$");
}

}  // namespace
