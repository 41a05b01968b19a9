#include "device/timers.h"

#include <gtest/gtest.h>

#include <string>

namespace simulator {
namespace {

class TimersTest : public testing::Test {
 protected:
  Timers::Action say(char letter) {
    return [this, letter] { said.push_back(letter); };
  }

  Timers timers;
  std::string said;
};

TEST_F(TimersTest, RunsWhatIsDueInOrder) {
  timers.at(seconds(2), say('b'));
  timers.at(seconds(1), say('a'));
  timers.at(seconds(3), say('c'));
  EXPECT_EQ(timers.next(), seconds(1));
  timers.run(seconds(2));
  EXPECT_EQ(said, "ab");
  EXPECT_EQ(timers.next(), seconds(3));
}

TEST_F(TimersTest, KeepsTheOrderOfAddingAtTheSameTime) {
  for (char letter : {'a', 'b', 'c'})
    timers.at(seconds(1), say(letter));
  timers.run(seconds(1));
  EXPECT_EQ(said, "abc");
}

TEST_F(TimersTest, CancelledTimerDoesNotRun) {
  const Timers::Id id = timers.at(seconds(1), say('a'));
  timers.cancel(id);
  timers.cancel(id);
  timers.cancel(0);
  timers.run(seconds(1));
  EXPECT_EQ(said, "");
  EXPECT_FALSE(timers.next());
}

TEST_F(TimersTest, ActionCanAddAnother) {
  timers.at(seconds(1), [this] { timers.at(seconds(1), say('b')); });
  timers.run(seconds(1));
  EXPECT_EQ(said, "b");
}

}  // namespace
}  // namespace simulator
