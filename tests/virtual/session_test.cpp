// Sessions in simulated time: the exports, the reader thread and a simulated iPod.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <ipodctl.h>

#include <string>
#include <vector>

#include "support/host_folder.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using virtual_platform::Loss;

using Trace = std::vector<std::string>;

class VirtualSessionTest : public testing::Test {
 protected:
  VirtualSessionTest() { warmUp(); }

  const session::HostFolder folder;  // without a logo
};

Trace traceOfASession(std::uint64_t seed) {
  VirtualSession session(seed);
  EXPECT_EQ(session.run([&] { session.play(); }), "");
  return session.world.trace();
}

TEST_F(VirtualSessionTest, PlaysInEveryOrderOfTheThreads) {
  for (std::uint64_t seed = 1; seed <= 200; ++seed) {
    const OpenThings before = openThings();
    {
      VirtualSession session(seed);
      Calls calls;
      ASSERT_EQ(session.run([&] { calls = session.play(); }), "") << seed;
      ASSERT_EQ(resultsOf(calls), shortScript().results) << seed;
      ASSERT_EQ(findFault(calls, exportPromises()), "") << seed;
      ASSERT_THAT(session.world.trace(), Contains(HasSubstr(": SelectFrequency(48000 Hz)")));
    }
    ASSERT_EQ(openThings(), before) << seed;
  }
}

TEST_F(VirtualSessionTest, RunsTheSameWithTheSameSeed) {
  const Trace first = traceOfASession(5);
  EXPECT_EQ(first, traceOfASession(5));
  EXPECT_NE(first, traceOfASession(6));
}

TEST_F(VirtualSessionTest, TakesTheTimeOfTheIpodAndNotOfTheLinuxHost) {
  VirtualSession session(1);
  ASSERT_EQ(session.run([&] { session.play(); }), "");
  EXPECT_GT(session.world.now(), milliseconds(200));
  EXPECT_LT(session.world.now(), milliseconds(2000));
}

TEST_F(VirtualSessionTest, WaitsNoLongerThanTheIpodNeeds) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    VirtualSession session(seed);
    Calls calls;
    ASSERT_EQ(session.run([&] { calls = session.play(); }), "") << seed;
    for (const Call& call : calls)
      EXPECT_LE(call.took, longestWithAQuickIpod(call)) << call.name << ", seed " << seed;
  }
}

TEST_F(VirtualSessionTest, TakesAnAnswerThatArrivesDuringTheWaitAtOnce) {
  constexpr milliseconds kLate(300);
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    VirtualSession session(seed);
    Time took{0};
    int result = 0;
    ASSERT_EQ(session.run([&] {
      IpodConnect();
      session.cable.rewrite([=](std::size_t, const simulator::Bytes& bytes) {
        return std::vector<virtual_platform::ComingFrame>{{kLate, bytes}};
      });
      const Time start = session.world.now();
      int index = 0;
      result = IpodGetTrackIndex(&index);
      took = session.world.now() - start;
      IpodDisconnect();
    }),
              "")
        << seed;
    EXPECT_EQ(result, 1) << seed;
    EXPECT_GE(took, kLate) << seed;
    EXPECT_LE(took, kLate + milliseconds(1)) << seed;
  }
}

class LostIpod : public VirtualSessionTest, public testing::WithParamInterface<Loss> {};

INSTANTIATE_TEST_SUITE_P(Loss, LostIpod,
                         testing::Values(Loss::kEndOfFile, Loss::kReadError, Loss::kWriteError,
                                         Loss::kSilence, Loss::kGone));

TEST_P(LostIpod, LeavesNothingOpenAndCanBeConnectedAgain) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const OpenThings before = openThings();
    {
      VirtualSession session(seed);
      Calls lost, again;
      session.world.spawn([&] {
        Sleep(500);  // while the track plays
        session.cable.unplug(session.world.now(), GetParam());
      });
      ASSERT_EQ(session.run([&] {
        IpodConnect();
        IpodGetFirstItem(0, IPOD_TRACKS, 0);
        IpodSongPlay(0);
        Sleep(1000);
        lost = session.play();
        session.cable.plug(session.world.now());
        again = session.play();
      }),
                "")
          << seed;
      ASSERT_EQ(lost.front().result, 0) << "a connection is there until IpodDisconnect";
      ASSERT_EQ(findFault(lost, exportPromises()), "") << seed;
      ASSERT_EQ(resultsOf(again), shortScript().results) << seed;
      ASSERT_EQ(findFault(again, exportPromises()), "") << seed;
    }
    ASSERT_EQ(openThings(), before) << seed;
  }
}

}  // namespace
}  // namespace virtual_session
