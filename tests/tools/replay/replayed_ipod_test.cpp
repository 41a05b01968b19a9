// What the iPod of a trace sends when.

#include <gmock/gmock.h>

#include "typed_replay.h"

namespace iaptrace {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using State = ReplayedIpod::State;

const char* const kNameAndMode =
    "# 1.000000 IPD1: open ok\n"
    "1.100000 IPD1: > 55 02 00 07 F7\n"
    "1.100100 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
    "1.200000 IPD1: > 55 02 00 03 FB\n"
    "1.200100 IPD1: < 55 03 00 04 00 F9\n"
    "# 1.300000 IPD1: close\n";

TEST(ReplayedIpod, SendsEachAnswerAfterItsRequest) {
  TypedReplay replay(kNameAndMode);
  EXPECT_THAT(replay.take(), ElementsAre("offer"));
  EXPECT_THAT(replay.open(), IsEmpty());
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
  EXPECT_EQ(replay.ipod.state(), State::kPlaying);
  EXPECT_THAT(replay.close(), IsEmpty());
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
  EXPECT_EQ(replay.ipod.summary(),
            "2 messages of the iPod and 2 messages of the host as in the trace");
}

TEST(ReplayedIpod, TakesRequestsInPieces) {
  TypedReplay replay(kNameAndMode);
  replay.open();
  EXPECT_THAT(replay.say("55 02 00"), IsEmpty());
  EXPECT_THAT(replay.say("07 F7 55 02 00 03 FB"), ElementsAre(kName, kMode));
}

TEST(ReplayedIpod, SendsDamagedBytesAsTheyWere) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 13 A9 55 06 00 08 5A\n"
      "0.3 IPD1: < 6F 65 00 C5\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskName), ElementsAre("13 A9 55 06 00 08 5A", "6F 65 00 C5"));
}

TEST(ReplayedIpod, SendsInOneWriteWhatWasOneRead) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA\n"
      "0.2 IPD1: < 55 04 00 02 00 13 E7 55 03 00 27 00 D6\n");
  replay.open();
  EXPECT_THAT(replay.say("55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00 CA"),
              ElementsAre("55 04 00 02 00 13 E7 55 03 00 27 00 D6"));
}

TEST(ReplayedIpod, AnswersARepeatedRequestAgain) {
  TypedReplay replay(kNameAndMode);
  replay.open();
  replay.say(kAskName);
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
  replay.close();
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
  EXPECT_EQ(replay.ipod.summary(),
            "3 messages of the iPod and 2 messages of the host as in the trace, 1 of the host in "
            "addition");
}

TEST(ReplayedIpod, LeavesOutTheAnswersToAMissingRequest) {
  TypedReplay replay(kNameAndMode);
  replay.open();
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
}

TEST(ReplayedIpod, DoesNotAnswerARequestThatTheTraceDoesNotHave) {
  TypedReplay replay(kNameAndMode);
  replay.open();
  EXPECT_THAT(replay.say("55 02 00 0B F3"), IsEmpty());
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
}

TEST(ReplayedIpod, AnswersARequestOfTheSameCommandWithOtherContent) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 04 04 00 18 05 DB\n"
      "0.2 IPD1: < 55 07 04 00 19 00 00 00 07 D5\n");
  replay.open();
  EXPECT_THAT(replay.say("55 04 04 00 18 01 DF"), ElementsAre("55 07 04 00 19 00 00 00 07 D5"));
}

TEST(ReplayedIpod, TakesTheHostsAnswersInAnyPlace) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: < 55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4\n"
      "0.1001 IPD1: > 55 04 0A 00 00 04 EE\n"
      "0.1002 IPD1: > 55 02 00 07 F7\n"
      "0.1003 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n");
  EXPECT_THAT(replay.take(), ElementsAre("offer"));
  EXPECT_THAT(replay.open(), ElementsAre("55 0E 0A 04 00 00 AC 44 00 00 00 00 00 00 00 00 F4"));
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.say("55 04 0A 00 00 04 EE"), IsEmpty());
  EXPECT_EQ(replay.ipod.summary(),
            "2 messages of the iPod and 2 messages of the host as in the trace");
}

TEST(ReplayedIpod, PullsTheCableAfterTheHostCouldRead) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
      "# 0.3 IPD1: read-failed 31\n"
      "# 0.3 IPD1: close\n"
      "# 0.4 IPD1: open ok\n"
      "# 0.5 IPD1: close\n");
  replay.open();
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.wait(milliseconds(99)), IsEmpty());
  EXPECT_THAT(replay.wait(milliseconds(1)), ElementsAre("pull", "offer"));
  EXPECT_THAT(replay.open(), IsEmpty());
  replay.close();
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
}

TEST(ReplayedIpod, PullsTheCableBeforeARequestThatTheTraceDoesNotHave) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
      "# 9.9 IPD1: read-failed 31\n");
  replay.open();
  replay.say(kAskName);
  EXPECT_THAT(replay.say(kAskName), ElementsAre("pull"));
}

TEST(ReplayedIpod, IgnoresAReadThatFailsBecauseTheHostCloses) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "# 0.1 IPD1: read-failed 995\n"
      "# 0.1 IPD1: close\n"
      "0.1 IPD1: < 55 03 00 04 00 F9\n");
  EXPECT_THAT(replay.take(), ElementsAre("offer"));
  EXPECT_THAT(replay.open(), IsEmpty());
  EXPECT_THAT(replay.wait(seconds(5)), IsEmpty());
  EXPECT_EQ(replay.ipod.state(), State::kPlaying);
  replay.close();
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
}

TEST(ReplayedIpod, RefusesAsManyAttemptsToOpenAsFailed) {
  TypedReplay replay(
      "# 0.0 IPD1: open failed 2\n"
      "# 1.0 IPD1: open failed 32\n"
      "# 2.0 IPD1: open ok\n"
      "# 3.0 IPD1: close\n");
  EXPECT_THAT(replay.take(), ElementsAre("refuse"));
  EXPECT_THAT(replay.failToOpen(), IsEmpty());
  EXPECT_THAT(replay.failToOpen(), ElementsAre("offer"));
  replay.open();
  EXPECT_EQ(replay.ipod.state(), State::kPlaying);
  replay.close();
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
}

TEST(ReplayedIpod, GoesOnWithTheNextConnectionWhenTheHostClosesEarly) {
  TypedReplay replay(std::string(kNameAndMode) +
                     "# 2.0 IPD1: open ok\n"
                     "2.1 IPD1: > 55 02 00 03 FB\n"
                     "2.2 IPD1: < 55 03 00 04 01 F8\n");
  replay.open();
  replay.close();
  replay.open();
  EXPECT_THAT(replay.say(kAskMode), ElementsAre("55 03 00 04 01 F8"));
}

TEST(ReplayedIpod, GivesUpWhenTheHostDoesNotGoOn) {
  TypedReplay replay(kNameAndMode);
  replay.open();
  replay.say(kAskName);
  replay.wait(milliseconds(10099));  // the patience, and the host's own pause
  EXPECT_EQ(replay.ipod.state(), State::kPlaying);
  replay.wait(milliseconds(1));
  EXPECT_EQ(replay.ipod.state(), State::kGaveUp);
  EXPECT_EQ(replay.ipod.failure(),
            "line 5: waited in vain for this: the host sends RequestRemoteUIMode");
}

TEST(ReplayedIpod, EndsWhenTheHostStaysAfterTheLastLine) {
  TypedReplay replay("# 0.0 IPD1: open ok\n");
  replay.open();
  replay.wait(seconds(10));
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
}

TEST(StrictReplay, AcceptsTheSameBytes) {
  TypedReplay replay(kNameAndMode, Accuracy::kStrict);
  replay.open();
  EXPECT_THAT(replay.say(kAskName), ElementsAre(kName));
  EXPECT_THAT(replay.say(kAskMode), ElementsAre(kMode));
  replay.close();
  EXPECT_EQ(replay.ipod.state(), State::kEnded);
}

TEST(StrictReplay, NamesTheFirstDifferentMessage) {
  TypedReplay replay(kNameAndMode, Accuracy::kStrict);
  replay.open();
  replay.say(kAskName);
  replay.say(kAskName);
  EXPECT_EQ(replay.ipod.state(), State::kDifferent);
  EXPECT_EQ(replay.ipod.failure(),
            "line 5: the host sent RequestRemoteUIMode; now it sent RequestiPodName");
}

TEST(StrictReplay, RefusesOtherContent) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 04 04 00 18 05 DB\n",
      Accuracy::kStrict);
  replay.open();
  replay.say("55 04 04 00 18 01 DF");
  EXPECT_EQ(replay.ipod.state(), State::kDifferent);
}

TEST(StrictReplay, RefusesAMissingMessage) {
  TypedReplay replay(kNameAndMode, Accuracy::kStrict);
  replay.open();
  replay.say(kAskName);
  replay.close();
  EXPECT_EQ(replay.ipod.failure(),
            "line 5: the host sent RequestRemoteUIMode; now it closed the device");
}

TEST(StrictReplay, RefusesAFurtherMessage) {
  TypedReplay replay(kNameAndMode, Accuracy::kStrict);
  replay.open();
  replay.say(kAskName);
  replay.say(kAskMode);
  replay.say(kAskMode);
  EXPECT_THAT(replay.ipod.failure(), HasSubstr("nothing more until this connection ended"));
}

TEST(StrictReplay, ComparesBytesThatAreNotAMessage) {
  TypedReplay replay(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 13 A9\n"
      "0.2 IPD1: > 55 02 00 07 F7\n",
      Accuracy::kStrict);
  replay.open();
  replay.say("13 A8");
  EXPECT_EQ(replay.ipod.failure(),
            "line 3: the host sent bytes without a message: 13 A9; now it sent bytes without a "
            "message: 13 A8");
}

TEST(StrictReplay, ComparesAMessageThatTheHostDoesNotFinish) {
  TypedReplay replay(kNameAndMode, Accuracy::kStrict);
  replay.open();
  replay.say("55 02 00");
  replay.close();
  EXPECT_EQ(replay.ipod.failure(),
            "line 3: the host sent RequestiPodName; now it sent bytes without a message: 55 02 00");
}

}  // namespace
}  // namespace iaptrace
