// What the host of a trace sends to another iPod, and what it reports.

#include <gmock/gmock.h>

#include "iaptrace/replayed_host.h"
#include "support/hex.h"
#include "typed_trace.h"

namespace iaptrace {
namespace {

using simulator::hex;
using simulator::milliseconds;
using simulator::seconds;
using simulator::Time;
using simulator::toHex;
using testing::ElementsAre;
using testing::IsEmpty;

const char* const kNameThenMode =
    "# 0.0 IPD1: open ok\n"
    "0.1 IPD1: > 55 02 00 07 F7\n"
    "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
    "0.3 IPD1: > 55 02 00 03 FB\n"
    "0.4 IPD1: < 55 03 00 04 00 F9\n"
    "# 0.5 IPD1: close\n";

class TypedHost {
 public:
  explicit TypedHost(const std::string& lines, double speed = 0)
      : host(typedConversation(lines), {speed, seconds(2)}) {}

  std::vector<std::string> take() {
    std::vector<std::string> all;
    for (const ReplayedHost::Action& action : host.takeActions(now)) {
      all.push_back(action.kind == ReplayedHost::Action::Kind::kOpen    ? "open"
                    : action.kind == ReplayedHost::Action::Kind::kClose ? "close"
                                                                        : toHex(action.bytes));
    }
    return all;
  }
  std::vector<std::string> hear(const std::string& bytes) {
    host.receive(now, hex(bytes));
    return take();
  }
  std::vector<std::string> wait(Time span) {
    now += span;
    return take();
  }

  Time now{0};
  ReplayedHost host;
};

TEST(ReplayedHost, SendsEachRequestAfterTheAnswerToTheOneBefore) {
  TypedHost host(kNameThenMode);
  EXPECT_THAT(host.take(), ElementsAre("open", "55 02 00 07 F7"));
  EXPECT_THAT(host.take(), IsEmpty());
  EXPECT_THAT(host.hear("55 06 00 08 5A 6F 65 00 C4"), ElementsAre("55 02 00 03 FB"));
  EXPECT_THAT(host.hear("55 03 00 04 00 F9"), ElementsAre("close"));
  EXPECT_TRUE(host.host.isOver());
  EXPECT_THAT(host.host.differences(), IsEmpty());
}

TEST(ReplayedHost, KeepsItsPausesAtSpeedOne) {
  TypedHost host(kNameThenMode, 1);
  EXPECT_THAT(host.take(), ElementsAre("open"));
  EXPECT_THAT(host.wait(milliseconds(99)), IsEmpty());
  EXPECT_THAT(host.wait(milliseconds(1)), ElementsAre("55 02 00 07 F7"));
}

TEST(ReplayedHost, AcceptsOtherContentOfTheSameKind) {
  TypedHost host(kNameThenMode);
  host.take();
  host.hear("55 04 00 08 5A 00 9A");
  host.hear("55 03 00 04 01 F8");
  EXPECT_THAT(host.host.differences(), IsEmpty());
}

TEST(ReplayedHost, ReportsAnAnswerOfAnotherKind) {
  TypedHost host(kNameThenMode);
  host.take();
  host.hear("55 04 00 02 04 07 EF");
  host.hear("55 03 00 04 00 F9");
  EXPECT_THAT(
      host.host.differences(),
      ElementsAre("line 3: RequestiPodName: then ReturniPodName; now iPodAck with status 4"));
}

TEST(ReplayedHost, ReportsAMissingAnswerAndGoesOn) {
  TypedHost host(kNameThenMode);
  host.take();
  EXPECT_THAT(host.wait(milliseconds(2099)), IsEmpty());
  EXPECT_THAT(host.wait(milliseconds(1)), ElementsAre("55 02 00 03 FB"));
  host.hear("55 03 00 04 00 F9");
  EXPECT_THAT(host.host.differences(),
              ElementsAre("line 3: RequestiPodName: then ReturniPodName; now no answer"));
}

TEST(ReplayedHost, ReportsAnAnswerToWhatWasNotAnswered) {
  TypedHost host(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 03 FB\n"
      "# 2.0 IPD1: close\n");
  host.take();
  host.hear("55 03 00 04 00 F9");
  EXPECT_THAT(host.wait(milliseconds(200)), ElementsAre("close"));
  EXPECT_THAT(host.host.differences(),
              ElementsAre("line 3: RequestRemoteUIMode: then no answer; now ReturnRemoteUIMode"));
}

TEST(ReplayedHost, DoesNotExpectSilenceFromAnIpodThatHadNoTimeToAnswer) {
  TypedHost host(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 06 F8\n"
      "# 0.1001 IPD1: close\n");
  EXPECT_THAT(host.take(), ElementsAre("open", "55 02 00 06 F8", "close"));
  host.hear("55 04 00 02 00 06 F4");
  EXPECT_THAT(host.host.differences(), IsEmpty());
}

TEST(ReplayedHost, AnswersWhenItIsAsked) {
  TypedHost host(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: < 55 03 00 27 00 D6\n"
      "0.2 IPD1: > 55 07 00 28 00 00 00 00 01 D0\n"
      "# 0.3 IPD1: close\n");
  EXPECT_THAT(host.take(), ElementsAre("open"));
  EXPECT_THAT(host.hear("55 03 00 27 00 D6"),
              ElementsAre("55 07 00 28 00 00 00 00 01 D0", "close"));
  EXPECT_THAT(host.host.differences(), IsEmpty());
}

TEST(ReplayedHost, ReportsQuestionsThatOnlyOneOfTheIpodsAsks) {
  TypedHost host(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: < 55 03 00 27 00 D6\n"
      "0.2 IPD1: > 55 07 00 28 00 00 00 00 01 D0\n"
      "# 0.3 IPD1: close\n");
  host.take();
  host.hear("55 02 0A 02 F2");
  EXPECT_THAT(host.wait(milliseconds(2200)), ElementsAre("close"));
  EXPECT_THAT(host.host.differences(),
              ElementsAre("line 3: this iPod did not send: GetAccessoryInfo type=capabilities",
                          "this iPod sent in addition: GetAccSampleRateCaps"));
}

TEST(ReplayedHost, LeavesOutTheRestWhenTheIpodHasGone) {
  TypedHost host(kNameThenMode);
  host.take();
  host.host.lose(host.now);
  EXPECT_THAT(host.take(), ElementsAre("close"));
  EXPECT_TRUE(host.host.isOver());
  EXPECT_THAT(host.host.differences(),
              ElementsAre("line 3: RequestiPodName: then ReturniPodName; now no answer",
                          "line 5: not sent: RequestRemoteUIMode"));
}

}  // namespace
}  // namespace iaptrace
