// Connecting to every kind of iPod, and to one whose identification fails at first.

#include <gtest/gtest.h>
#include <ipodctl.h>

#include "session/host_screen.h"
#include "session/session_ipod.h"

namespace session {
namespace {

using simulator::Lingo;
using simulator::SimulatedIpod;

class IdentificationSession : public testing::Test {
 protected:
  void TearDown() override { IpodDisconnect(); }

  size_t announcements() {
    return ipod.look([](SimulatedIpod& device) {
      return device.countReceived(Lingo::kGeneral, simulator::kIdentifyDeviceLingoes);
    });
  }

  SessionIpod ipod;
};

TEST_F(IdentificationSession, SucceedsInTheFirstAttempt) {
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(announcements(), 1u);
}

// Takes a second: the library waits so long for the version that was lost.
TEST_F(IdentificationSession, SucceedsInTheSecondAttemptAfterASecondOfSilence) {
  ipod.addFault("lost@00:0F#1");
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(announcements(), 2u);
  EXPECT_EQ(ipodName(), "Demo iPod");
}

// Takes two seconds. The third attempt does not count, although the iPod answers it in full.
TEST_F(IdentificationSession, FailsInTheThirdAttemptAfterTwoSecondsOfSilence) {
  ipod.addFault("lost@00:0F#1");
  ipod.addFault("lost@00:0F#2");
  EXPECT_EQ(IpodConnect(), 0);
  EXPECT_EQ(announcements(), 3u);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(ipodName(), "Demo iPod") << "the link stays open";
  EXPECT_EQ(IpodConnect(), 1) << "the iPod answers at once now";
  EXPECT_EQ(announcements(), 4u);
}

// Takes three seconds, one for each attempt.
TEST_F(IdentificationSession, FailsWithASilentIpodAfterThreeSeconds) {
  ipod.addFault("silence@*:*");
  const auto time = durationOf([] { EXPECT_EQ(IpodConnect(), 0); });
  EXPECT_GE(time, simulator::seconds(3));
  EXPECT_LT(time, simulator::seconds(6));
  EXPECT_EQ(announcements(), 3u);
}

class EveryModel : public testing::TestWithParam<std::string> {
 protected:
  void TearDown() override { IpodDisconnect(); }
};

INSTANTIATE_TEST_SUITE_P(, EveryModel, testing::ValuesIn(simulator::personalityNames()),
                         [](const auto& model) { return model.param; });

// Some acknowledge late, and what comes between a request and its reply makes the request fail: the
// host goes on when the iPod has nothing more to say.
TEST_P(EveryModel, ConnectsAndPlays) {
  SessionIpod ipod(simulator::personality(GetParam()));
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_TRUE(ipod.settle());
  EXPECT_TRUE(ipod.look([](SimulatedIpod& device) { return device.inExtendedMode(); }));
  ASSERT_TRUE(goToItem(IpodGetFirstItem(0, IPOD_ARTISTS, 0), "Brevity Street"));
  IpodGetFirstItem(1, IPOD_TRACKS, 0);
  IpodSongPlay(0);
  EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 0));
  IpodCommand(IPOD_PAUSE);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PAUSED);
  IpodCommand(IPOD_PLAY);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PLAYING);
}

}  // namespace
}  // namespace session
