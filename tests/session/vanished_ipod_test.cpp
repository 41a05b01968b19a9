// The cable of the iPod is pulled: calls return soon and report the failure, and the next
// connection works.

#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::milliseconds;
using simulator::SimulatedIpod;

// A single request may wait a second for its reply before it fails.
constexpr milliseconds kSoon{1500};

class VanishedIpod : public testing::Test {
 protected:
  void TearDown() override { IpodDisconnect(); }

  template <class Call>
  void expectSoon(Call call) {
    EXPECT_LT(durationOf(call), kSoon);
  }
  void unplug() {
    ipod.pty().unplug();
    EXPECT_TRUE(eventually([] { return deskRunningThreads() == 0; })) << "the reader has ended";
  }
  void plugAgain() {
    ipod.look([](SimulatedIpod& device) { device.faults().clear(); });
    expectSoon([] { IpodDisconnect(); });
    EXPECT_EQ(IpodIsConnect(), 0);
    sentBefore = ipod.look([](SimulatedIpod& device) { return device.counters().bytesSent; });
    ipod.pty().plug();
    EXPECT_EQ(IpodConnect(), 1);
    EXPECT_EQ(ipodName(), "Demo iPod");
  }
  void expectNothingAnswers();
  /// Pulls the cable when the iPod has sent this many more bytes.
  void pullAfterSending(uint32_t bytes) {
    ipod.look([&](SimulatedIpod& device) {
      simulator::Fault pulled;
      pulled.kind = simulator::FaultKind::kUnplugAfterSent;
      pulled.value = static_cast<uint32_t>(device.counters().bytesSent - sentBefore) + bytes;
      device.faults().add(pulled);
    });
  }

  SessionIpod ipod;
  size_t sentBefore = 0;  ///< bytes of the iPod, before its present connection
};

void VanishedIpod::expectNothingAnswers() {
  expectSoon([] {
    EXPECT_EQ(IpodIsConnect(), 1) << "until IpodDisconnect";
    EXPECT_EQ(valueOf(IpodGetTrackIndex), -77);
    EXPECT_EQ(valueOf(IpodGetShuffleMode), -77);
    EXPECT_EQ(valueOf(IpodGetRepeatMode), -77);
    EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_STOPPED);
    EXPECT_EQ(valueOf(IpodGetCurrentTrackPosition), 0);
    EXPECT_EQ(valueOf(IpodSongGetNumElem), 0);
    EXPECT_EQ(valueOf(IpodGetMediaFileCount), 0);
    EXPECT_EQ(IpodGetNumberOfPlaylist(), 0);
    EXPECT_EQ(trackTexts().result, -1);
    EXPECT_EQ(ipodName() + serialNumber() + itemName() + parentUpDownName(), "");
    for (int command = 0; command <= 15; ++command)
      EXPECT_EQ(IpodCommand(command), 0);
    EXPECT_EQ(IpodSongPlay(0), 0);
    EXPECT_NE(IpodGetFirstItem(0, IPOD_ARTISTS, 0), nullptr);
    EXPECT_EQ(IpodGetNextItem(), nullptr) << "the list opened empty";
    EXPECT_EQ(IpodConnect(), 0) << "a connection is there until IpodDisconnect";
  });
}

TEST_F(VanishedIpod, BetweenTwoCalls) {
  ASSERT_EQ(IpodConnect(), 1);
  IpodGetFirstItem(0, IPOD_PLAYLISTS, 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  IpodValidateUpDownTree();
  unplug();
  expectSoon([] { EXPECT_EQ(IpodCurItemIsEmpty(), 1); });
  expectNothingAnswers();
  plugAgain();
}

TEST_F(VanishedIpod, WhileItPlays) {
  ASSERT_EQ(IpodConnect(), 1);
  IpodGetFirstItem(0, IPOD_TRACKS, 0);
  IpodSongPlay(3);
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PLAYING);
  unplug();
  expectNothingAnswers();
  plugAgain();
  EXPECT_EQ(valueOf(IpodGetCurrentPlayStatus), IPOD_PAUSED);
}

TEST_F(VanishedIpod, InTheMiddleOfAWalkThroughAList) {
  ASSERT_EQ(IpodConnect(), 1);
  for (const uint32_t bytes : {1u, 20u, 333u, 1000u}) {
    IpodGetFirstItem(0, IPOD_TRACKS, 0);
    ASSERT_NE(itemName(), "");
    pullAfterSending(bytes);
    std::string name = "a name";
    for (int i = 0; i < 400 && !name.empty(); ++i) {
      EXPECT_NE(IpodGetNextItem(), nullptr);
      expectSoon([&] { name = itemName(); });
    }
    EXPECT_EQ(name, "");
    plugAgain();
  }
}

// At every place of the identification and of the requests after it.
TEST_F(VanishedIpod, DuringTheConnection) {
  ASSERT_EQ(IpodConnect(), 1);
  const size_t sent = ipod.look([](SimulatedIpod& device) { return device.counters().bytesSent; });
  IpodDisconnect();
  for (size_t bytes = 0; bytes < sent; bytes += 6) {
    ipod.addFault("unplug-sent=" + std::to_string(bytes));
    expectSoon([] { IpodConnect(); });
    EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) { return !device.plugged(); }))
        << bytes;
    plugAgain();
    IpodDisconnect();
  }
}

// Each packet of the logo fails at once; the connection succeeds anyway.
TEST_F(VanishedIpod, WhileTheLogoIsSent) {
  ipod.folder.putLogo();
  ipod.addFault("unplug-received=20000");
  expectSoon([] { EXPECT_EQ(IpodConnect(), 1); });
  EXPECT_FALSE(ipod.look([](SimulatedIpod& device) { return device.plugged(); }));
  EXPECT_EQ(ipodName(), "");
  plugAgain();
}

TEST_F(VanishedIpod, WhileACallWaitsForItsAnswer) {
  ASSERT_EQ(IpodConnect(), 1);
  ipod.addFault("lost@00:07");
  std::thread puller([&] {
    EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) {
      return device.countReceived(simulator::Lingo::kGeneral, simulator::kRequestIpodName) > 0;
    }));
    ipod.pty().unplug();
  });
  EXPECT_LT(durationOf([] { EXPECT_EQ(ipodName(), ""); }), milliseconds(900))
      << "less than the second for which it waits for a living iPod";
  puller.join();
  plugAgain();
}

TEST_F(VanishedIpod, TenTimes) {
  for (int round = 0; round < 10; ++round) {
    ASSERT_EQ(IpodConnect(), 1) << round;
    unplug();
    EXPECT_EQ(ipodName(), "");
    IpodDisconnect();
    EXPECT_EQ(IpodConnect(), 0) << "nothing to connect to";
    ipod.pty().plug();
  }
}

// The kernel may count a thread for a moment longer than it runs.
TEST_F(VanishedIpod, LeavesNothingOpenIn50Connections) {
  const unsigned threads = openThings().threads;
  ASSERT_EQ(IpodConnect(), 1);
  IpodDisconnect();
  ASSERT_TRUE(eventually([&] { return openThings().threads == threads; }));
  const OpenThings before = openThings();
  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(IpodConnect(), 1) << round;
    ASSERT_EQ(ipodName(), "Demo iPod") << round;
    EXPECT_EQ(deskRunningThreads(), 1u);
    IpodDisconnect();
    ASSERT_EQ(deskRunningThreads(), 0u) << round;
    ASSERT_TRUE(eventually([&] { return openThings() == before; }))
        << round << ": " << openThings() << ", before: " << before;
  }
}

}  // namespace
}  // namespace session
