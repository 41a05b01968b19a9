// Several host threads in the exports at once, while the iPod announces sample rates.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::SimulatedIpod;
using simulator::Time;
using simulator::Track;

constexpr int kRounds = 25;

// A track at 44100 Hz, as the iPod has announced already.
constexpr int kPlaying = 4;

/// A thread that announces one sample rate after the other until it is destroyed.
class Announcer {
 public:
  explicit Announcer(SessionIpod& sessionIpod) : ipod(sessionIpod), thread([this] { run(); }) {}
  ~Announcer() {
    done = true;
    ipod.look([](SimulatedIpod&) {});  // wakes every thread that waits for the iPod
    thread.join();
  }
  Announcer(const Announcer&) = delete;
  Announcer& operator=(const Announcer&) = delete;

 private:
  void run() {
    for (uint32_t i = 0; !done; ++i) {
      const size_t before = acknowledged();
      ipod.pty().act([&](SimulatedIpod& device, Time now) {
        device.announceSampleRate(now, i % 2 == 0 ? 48000 : 32000);
      });
      ipod.waitUntil(
          [&](const SimulatedIpod& device) { return done || countAcknowledged(device) > before; });
    }
  }
  static size_t countAcknowledged(const SimulatedIpod& device) {
    return device.countReceived(simulator::Lingo::kDigitalAudio, simulator::kAccAck);
  }
  size_t acknowledged() {
    return ipod.look([](SimulatedIpod& d) { return countAcknowledged(d); });
  }

  SessionIpod& ipod;
  std::atomic<bool> done{false};
  std::thread thread;
};

class HostThreads : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(IpodConnect(), 1);
    IpodGetFirstItem(0, IPOD_TRACKS, 0);
    IpodSongPlay(kPlaying);
    IpodCommand(IPOD_PAUSE);
  }
  void TearDown() override { IpodDisconnect(); }

  /// Repeats each work on a separate thread.
  static void runInSilence(const std::vector<std::function<void()>>& works) {
    std::vector<std::thread> threads;
    for (const auto& work : works) {
      threads.emplace_back([&work] {
        for (int round = 0; round < kRounds; ++round)
          work();
      });
    }
    for (std::thread& thread : threads)
      thread.join();
  }
  /// The same while the iPod makes announcements.
  void runTogether(const std::vector<std::function<void()>>& works) {
    const Announcer announcer(ipod);
    runInSilence(works);
  }

  // What a thread can do while others make calls.
  void readTheDevicePage() {
    EXPECT_EQ(ipodName(), "Demo iPod");
    EXPECT_EQ(serialNumber(), "8K821D0ZY5N");
  }
  void readWhatPlays() {
    EXPECT_EQ(playStatusAndIndex(), std::pair(int{IPOD_PAUSED}, kPlaying));
    const TrackTexts texts = trackTexts();
    EXPECT_EQ(texts.index, kPlaying);
    EXPECT_EQ(texts.title, hostText(music[kPlaying].title));
    EXPECT_EQ(texts.artist, hostText(music[kPlaying].artist));
  }
  void changeModes() {
    for (const int mode : {IPOD_MODE_TRACKS, IPOD_MODE_ALBUMS, IPOD_MODE_OFF}) {
      IpodSetRepeatMode(mode);
      EXPECT_EQ(valueOf(IpodGetRepeatMode), mode);
    }
  }
  void browse() {
    const int* index = IpodGetFirstItem(0, IPOD_GENRES, 0);
    EXPECT_EQ(itemName(), genres[0]);
    EXPECT_EQ(IpodGetNextItem(), index);
    EXPECT_EQ(itemName(), genres[1]);
    EXPECT_EQ(valueOf(IpodGetMediaFileCount), static_cast<int>(genres.size()));
    EXPECT_EQ(IpodGetType(), IPOD_GENRES);
    EXPECT_EQ(IpodIsTrack(), 0);
    EXPECT_EQ(IpodCurItemIsEmpty(), 0);
    IpodGetFirstItem(1, IPOD_ARTISTS, 0);
    EXPECT_EQ(IpodGetParentItem(), index);
  }

  SessionIpod ipod;
  const simulator::MusicLibrary library = simulator::builtInLibrary();
  const Tracks music = byArtist(musicOf(library));
  const Names genres = namesOf(music, &Track::genre);
};

TEST_F(HostThreads, EachOfTwoGetsItsOwnAnswers) {
  runTogether({[this] { readTheDevicePage(); }, [this] { browse(); }});
}

TEST_F(HostThreads, EachOfFourGetsItsOwnAnswers) {
  runTogether({[this] { readTheDevicePage(); }, [this] { readWhatPlays(); },
               [this] { changeModes(); }, [this] { browse(); }});
}

TEST_F(HostThreads, AskingTheSameGetTheSame) {
  const auto work = [this] {
    readTheDevicePage();
    readWhatPlays();
  };
  runTogether({work, work, work, work});
}

TEST_F(HostThreads, ConnectMeanwhileWithoutWaitingAndChangeNothing) {
  runTogether({[this] { readWhatPlays(); },
               [] {
                 EXPECT_EQ(IpodConnect(), 0);
                 EXPECT_EQ(IpodIsConnect(), 1);
                 EXPECT_EQ(IpodValidateUpDownTree(), 0);
               }});
}

// Takes a second: the other call waits that long for its lost answer.
TEST_F(HostThreads, ConnectWithoutWaitingForABusyCall) {
  ipod.addFault("lost@00:07");
  std::thread busy([] { EXPECT_EQ(ipodName(), ""); });
  EXPECT_TRUE(ipod.waitUntil([](const SimulatedIpod& device) {
    return device.countReceived(simulator::Lingo::kGeneral, simulator::kRequestIpodName) > 0;
  }));
  EXPECT_LT(durationOf([] { EXPECT_EQ(IpodConnect(), 0); }), simulator::milliseconds(500));
  busy.join();
}

TEST_F(HostThreads, FollowEveryAnnouncementDuringTheirRequests) {
  ipod.takeAudioCalls();
  runTogether({[this] { readTheDevicePage(); }, [this] { browse(); }});
  const auto announced = [](const SimulatedIpod& device) {
    return device.countSent(simulator::Lingo::kDigitalAudio, simulator::kTrackNewAudioAttributes);
  };
  const auto acknowledged = [](const SimulatedIpod& device) {
    return device.countReceived(simulator::Lingo::kDigitalAudio, simulator::kAccAck);
  };
  ASSERT_TRUE(ipod.waitUntil([&](const SimulatedIpod& device) {
    return !device.nextWake() && announced(device) == acknowledged(device);
  }));
  std::vector<std::string> expected;
  const size_t count = ipod.look(announced) - 1;  // one came with the identification
  for (size_t i = 0; i < count; ++i)
    expected.push_back(i % 2 == 0 ? "SelectFrequency(48000 Hz)" : "SelectFrequency(32000 Hz)");
  EXPECT_GE(count, 2u);
  EXPECT_TRUE(ipod.log.waitFor("SelectFrequency(", static_cast<int>(count)));
  EXPECT_EQ(ipod.takeAudioCalls(), expected);
}

TEST_F(HostThreads, MayConnectAndDisconnectAtWill) {
  runInSilence({[] {
                  IpodConnect();
                  IpodDisconnect();
                },
                [] {
                  const std::string name = ipodName();
                  EXPECT_TRUE(name.empty() || name == "Demo iPod") << name;
                }});
}

}  // namespace
}  // namespace session
