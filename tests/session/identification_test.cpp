// Connecting to every kind of iPod, and to one whose identification fails at first.

#include <gtest/gtest.h>
#include <ipodctl.h>

#include <algorithm>

#include "device/personality_settings.h"
#include "support/host_screen.h"
#include "support/session_ipod.h"

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

// Takes a second: the library waits that long for the version that was lost.
TEST_F(IdentificationSession, SucceedsInTheSecondAttemptAfterASecondOfSilence) {
  ipod.addFault("lost@00:0F#1");
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(announcements(), 2u);
  EXPECT_EQ(ipodName(), "Demo iPod");
}

// Takes two seconds. The library ignores the third attempt although the iPod answers all of it.
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

/// An iPod with one switch set.
simulator::Personality with(const char* setting) {
  simulator::Personality model;
  simulator::applySetting(model, setting);
  return model;
}

class SwitchedSession : public testing::Test {
 protected:
  void TearDown() override { IpodDisconnect(); }

  static size_t refusals(SessionIpod& ipod) {
    const simulator::Message refusal{0x00, 0x02, {0x04, 0x13}};
    return ipod.look([&](SimulatedIpod& device) {
      const auto& past = device.history();
      return static_cast<size_t>(
          std::count_if(past.begin(), past.end(), [&](const simulator::Traffic& each) {
            return each.kind == simulator::Traffic::Kind::kSent && each.message == refusal;
          }));
    });
  }
};

// Takes three seconds: the first version is lost, and each of the other attempts is refused. The
// next connection opens the link again, and the iPod sees another accessory.
TEST_F(SwitchedSession, FailsWithAnIpodThatRefusesAnotherAttemptAndSucceedsNextTime) {
  SessionIpod ipod(with("refuses-second-identification=yes"));
  ipod.addFault("lost@00:0F#1");
  const auto time = durationOf([] { EXPECT_EQ(IpodConnect(), 0); });
  EXPECT_LT(time, simulator::seconds(6));
  EXPECT_EQ(refusals(ipod), 2u);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(refusals(ipod), 2u);
}

// Takes three seconds: the iPod restarts while the link stays open, and ignores the requests of a
// host that it does not know.
TEST_F(SwitchedSession, ReturnsFromRequestsThatAnIpodIgnoresUntilItIsConnectedAgain) {
  SessionIpod ipod(with("silent-before-identification=yes"));
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_TRUE(ipod.settle());
  EXPECT_EQ(ipodName(), "Demo iPod");
  ipod.pty().act([](SimulatedIpod& device, simulator::Time now) { device.hangUp(now); });
  for (const auto& request : {+[] { EXPECT_EQ(ipodName(), ""); },
                              +[] { EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED); },
                              +[] { EXPECT_EQ(IpodCommand(IPOD_TOGGLE_PLAY_PAUSE), 0); }}) {
    EXPECT_LT(durationOf(request), simulator::milliseconds(1900));
  }
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodConnect(), 1);
  ASSERT_TRUE(ipod.settle());
  EXPECT_EQ(ipodName(), "Demo iPod");
}

// The second question arrives after the identification, and the library does not answer it.
TEST_F(SwitchedSession, GoesOnWithAnIpodThatAsksAfterTheIdentification) {
  simulator::Personality model = with("accessory-info-delay=100");
  model.accessoryInfoPatience = simulator::milliseconds(300);
  SessionIpod ipod(model);
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) {
    return device.countSent(Lingo::kGeneral, simulator::kGetAccessoryInfo) == 2;
  }));
  ASSERT_TRUE(ipod.settle());
  EXPECT_EQ(ipodName(), "Demo iPod");
  EXPECT_TRUE(goToItem(IpodGetFirstItem(0, IPOD_ARTISTS, 0), "Brevity Street"));
}

// The library waits for the acknowledgement, so the status is the new one.
TEST_F(SwitchedSession, PlaysWhenTheSoundHasStarted) {
  SessionIpod ipod(with("sound-delay=200"));
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_TRUE(ipod.settle());
  ASSERT_NE(IpodGetFirstItem(0, IPOD_ARTISTS, 0), nullptr);
  IpodDisableTabVisualizationActive();
  IpodGetFirstItem(1, IPOD_TRACKS, 1);
  const auto time = durationOf([] { IpodSongPlay(0); });
  EXPECT_GE(time, simulator::milliseconds(200));
  EXPECT_LT(time, simulator::milliseconds(900));
  EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 0));
}

class EveryModel : public testing::TestWithParam<std::string> {
 protected:
  void TearDown() override { IpodDisconnect(); }
};

INSTANTIATE_TEST_SUITE_P(, EveryModel, testing::ValuesIn(simulator::personalityNames()),
                         [](const auto& model) { return model.param; });

// Some iPods acknowledge late, and a message between a request and its reply makes the request
// fail. The host continues when the iPod has nothing more to send.
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
