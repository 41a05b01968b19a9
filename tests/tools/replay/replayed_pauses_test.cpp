// Which pauses of the iPod a replay keeps.

#include <gmock/gmock.h>

#include "typed_replay.h"

namespace iaptrace {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const char* const kAskTitle = "55 07 04 00 20 00 00 00 00 D5";

TEST(ReplayedPauses, KeepTheirLengthAtSpeedOne) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "0.6 IPD1: < 55 03 00 04 00 F9\n",
      Accuracy::kTolerant, 1);
  replay.open();
  EXPECT_THAT(replay.say(kAskMode), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(499)), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1)), ElementsAre(kMode));
}

TEST(ReplayedPauses, AreDividedByTheSpeed) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "0.6 IPD1: < 55 03 00 04 00 F9\n",
      Accuracy::kTolerant, 5);
  replay.open();
  replay.say(kAskMode);
  EXPECT_THAT(replay.wait(milliseconds(99)), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1)), ElementsAre(kMode));
}

TEST(ReplayedPauses, StayLongerThanTheTimeOutAtAnySpeed) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "5.0 IPD1: < 55 03 00 04 00 F9\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskMode), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1199)), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1)), ElementsAre(kMode));
}

TEST(ReplayedPauses, StayShorterThanTheTimeOutAtSpeedOne) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "1.099 IPD1: < 55 03 00 04 00 F9\n",
      Accuracy::kTolerant, 1);
  replay.open();
  replay.say(kAskMode);
  EXPECT_THAT(replay.wait(milliseconds(900)), ElementsAre(kMode));
}

TEST(ReplayedPauses, BeginAgainWithEachMessageOfTheIpod) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 07 04 00 28 00 00 00 03 CA\n"
      "1.0 IPD1: < 55 0A 04 00 01 06 00 28 00 00 03 E8 D8\n"
      "1.9 IPD1: < 55 06 04 00 01 00 00 28 CD\n");
  replay.open();
  EXPECT_THAT(replay.say("55 07 04 00 28 00 00 00 03 CA"),
              ElementsAre("55 0A 04 00 01 06 00 28 00 00 03 E8 D8", "55 06 04 00 01 00 00 28 CD"));
}

TEST(ReplayedPauses, DoNotBeginAgainWithASampleRate) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "1.0 IPD1: < 55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4\n"
      "1.001 IPD1: > 55 04 0A 00 00 04 EE\n"
      "1.9 IPD1: < 55 03 00 04 00 F9\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskMode),
              ElementsAre("55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4"));
  EXPECT_THAT(replay.say("55 04 0A 00 00 04 EE"), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1199)), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1)), ElementsAre(kMode));
}

TEST(ReplayedPauses, AreLeftOutWhenTheHostWaitsForNothing) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "0.2 IPD1: < 55 03 00 04 00 F9\n"
      "60.0 IPD1: < 55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskMode),
              ElementsAre(kMode, "55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4"));
}

TEST(ReplayedPauses, EndWithTheHostsNextRequestWithoutTheLateAnswer) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "1.5 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
      "1.6 IPD1: > 55 02 00 03 FB\n"
      "1.7 IPD1: < 55 03 00 04 00 F9\n");
  replay.open();
  replay.say(kAskName);
  replay.wait(milliseconds(1050));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
}

// The library discards it, or takes it for the answer to the next request.
TEST(SpareAnswers, WaitUntilTheHostIsBetweenTwoRequestsIfTheyWereDiscarded) {
  const std::string lines =
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4 55 06 00 08 5A 6F 65 00 C4\n"
      "0.3 IPD1: > 55 07 04 00 20 00 00 00 00 D5\n"
      "0.4 IPD1: < 55 06 04 00 01 04 00 20 D1\n";
  TypedReplay replay(lines);
  replay.open();
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.wait(milliseconds(20)), ElementsAre(kName));

  TypedReplay fast(lines);
  fast.open();
  fast.say(kAskName);
  EXPECT_THAT(fast.say(kAskTitle), ElementsAre("55 06 04 00 01 04 00 20 D1"));
}

TEST(SpareAnswers, AreSentAfterTheRequestThatTookThem) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4 55 06 00 08 5A 6F 65 00 C4\n"
      "0.3 IPD1: > 55 07 04 00 20 00 00 00 00 D5\n"
      "0.3001 IPD1: > 55 02 00 03 FB\n"
      "0.3002 IPD1: < 55 06 04 00 01 04 00 20 D1\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.wait(milliseconds(50)), IsEmpty());
  EXPECT_THAT(replay.say(kAskTitle), ElementsAre(kName));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre("55 06 04 00 01 04 00 20 D1"));
}

TEST(SwappedLines, AreAnAnswerThatWasRecordedBeforeItsRequest) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1001 IPD1: < 55 03 00 04 00 F9\n"
      "0.1002 IPD1: > 55 02 00 03 FB\n");
  EXPECT_THAT(replay.open(), ElementsAre("offer"));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
}

}  // namespace
}  // namespace iaptrace
