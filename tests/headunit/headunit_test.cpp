// What the programs that others copy print about an iPod, on the deterministic platform.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "faults/fault_text.h"
#include "headunit/trial.h"
#include "headunit/verdict.h"
#include "support/host_folder.h"
#include "wire/lingo.h"

namespace headunit_test {
namespace {

using simulator::SimulatedIpod;
using simulator::Traffic;
using std::chrono::seconds;
using testing::Contains;
using testing::Not;

struct Answer {
  const char* fault;
  const char* line;  ///< what the head unit shows instead
  int status;
};

Outcome runWith(Trial trial) {
  const session::HostFolder folder;  // without a logo
  return run(trial);
}

Outcome runWithFault(const std::string& fault, std::uint64_t seed = 1) {
  Trial trial;
  trial.seed = seed;
  trial.disturb = [&](SimulatedIpod& ipod, virtual_platform::VirtualIpod&) {
    simulator::addFault(ipod.faults(), fault);
  };
  return runWith(trial);
}

class UnansweredQuestion : public testing::TestWithParam<Answer> {};

INSTANTIATE_TEST_SUITE_P(
    HeadUnit, UnansweredQuestion,
    testing::Values(
        Answer{"lost@00:000F",
               "   No iPod could be connected on \"IPD1:\". Check the cable, then start headunit "
               "again.",
               1},
        Answer{"lost@04:0018", "   The iPod does not say how long this list is.", 3},
        Answer{"lost@04:001A", "   The iPod does not send the names of this list.", 3},
        Answer{"lost@04:001C", "   The iPod did not answer what it plays.", 3},
        Answer{"lost@04:001E", "   The iPod did not answer what it plays.", 3},
        Answer{"lost@04:002C", "   The iPod did not confirm shuffle mode 2.", 3},
        Answer{"lost@00:0007", "   name:          (not answered)", 3},
        Answer{"lost@04:0020", "   title:  (not known)", 0},
        Answer{"silence@04:001A#5",
               "   The iPod is lost: no usable answer comes any more. Plug it in again, then start "
               "headunit again.",
               1}));

TEST_P(UnansweredQuestion, IsReported) {
  const Outcome outcome = runWithFault(GetParam().fault);
  EXPECT_THAT(outcome.lines, Contains(GetParam().line));
  EXPECT_EQ(outcome.status, GetParam().status);
}

/// Faults after which a careless head unit shows wrong results.
class DeceptiveFault : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(HeadUnit, DeceptiveFault,
                         testing::Values("doubled@04:001A#1", "doubled@04:0018", "doubled@04:0038",
                                         "late=1500@04:0018", "late=1500@04:001A"));

TEST_P(DeceptiveFault, ShowsNothingWrong) {
  const std::string name = GetParam();
  const Outcome whole = runWith({});
  constexpr std::uint64_t kOrders = 5;
  for (std::uint64_t seed = 1; seed <= kOrders; ++seed) {
    const Outcome outcome = runWithFault(name, seed);
    EXPECT_GT(outcome.struck, 0u);
    EXPECT_EQ(faultOfHeadUnit(outcome, {name, name, false, false, nullptr}, whole), "") << seed;
  }
}

/// The count that checks the list is lost or wrong, and the second attempt gets no count.
class ListThatHadItems : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(HeadUnit, ListThatHadItems,
                         testing::Values("lost@04:0018#2", "drift=-50@04:0018#2"));

TEST_P(ListThatHadItems, IsNotCalledEmpty) {
  Trial trial;
  trial.disturb = [](SimulatedIpod& ipod, virtual_platform::VirtualIpod&) {
    for (const char* const fault :
         {GetParam(), "lost@04:0018#3", "lost@04:0018#4", "lost@04:0018#5"}) {
      simulator::addFault(ipod.faults(), fault);
    }
  };
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("   The iPod does not say how long this list is."));
  EXPECT_THAT(outcome.lines, Not(Contains("   (nothing)")));
}

TEST(HeadUnit, DistinguishesAnEmptyListFromAnUncountedOne) {
  Trial trial;
  trial.library = {"Empty", {}, {}, {}};
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("   (nothing)"));
  EXPECT_EQ(outcome.status, 0);
}

TEST(HeadUnit, ReportsThatTheIpodDoesNotPlay) {
  Trial trial;
  trial.handle = &SimulatedIpod::pressPause;
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("   The iPod did not start to play."));
  EXPECT_THAT(outcome.lines, Not(Contains("---- 6. Next track")));
  EXPECT_EQ(outcome.status, 3);
}

TEST(HeadUnit, ReportsThatTheIpodDoesNotPause) {
  Trial trial;
  trial.handle = &SimulatedIpod::pressPlay;
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("   The iPod did not pause."));
  EXPECT_EQ(outcome.status, 3);
}

TEST(FirstSession, DoesNotReportThatAPausedIpodPlays) {
  Trial trial;
  trial.program = HostProgram::kFirstSession;
  trial.handle = &SimulatedIpod::pressPause;
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("The iPod does not say that an artist plays. Put music on "
                                      "it, then start again."));
  EXPECT_EQ(outcome.status, 1);
}

TEST(FirstSession, ReportsThatThereIsNoMusic) {
  Trial trial;
  trial.program = HostProgram::kFirstSession;
  trial.library = {"Empty", {}, {}, {}};
  const Outcome outcome = runWith(trial);
  EXPECT_THAT(outcome.lines, Contains("The iPod does not say that an artist plays. Put music on "
                                      "it, then start again."));
  EXPECT_EQ(outcome.status, 1);
}

/// Returns the longest time without received messages before the first Extended Interface request.
Time silenceAfterConnecting(const Outcome& outcome) {
  Time last{0};
  for (const Traffic& each : outcome.traffic) {
    if (each.kind != Traffic::Kind::kReceived) continue;
    const bool isExtended =
        each.message.lingo == static_cast<uint8_t>(simulator::Lingo::kExtendedInterface);
    if (isExtended) return each.at - last;
    last = each.at;
  }
  return Time(0);
}

class NewConnection : public testing::TestWithParam<HostProgram> {};

INSTANTIATE_TEST_SUITE_P(Programs, NewConnection,
                         testing::Values(HostProgram::kHeadUnit, HostProgram::kFirstSession));

TEST_P(NewConnection, IsLeftAloneForASecond) {
  Trial trial;
  trial.program = GetParam();
  const Outcome outcome = runWith(trial);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_GE(silenceAfterConnecting(outcome), seconds(1));
}

}  // namespace
}  // namespace headunit_test
