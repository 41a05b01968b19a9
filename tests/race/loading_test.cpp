// Many threads make the first calls of a library, and the library is unloaded while its iPod is
// still sending.

#include <desk.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <limits>
#include <thread>
#include <vector>

#include "race/announced_rates.h"
#include "race/slow_audio.h"
#include "race/starting_line.h"
#include "support/eventually.h"
#include "support/guarded.h"
#include "support/last_words.h"
#include "support/loaded_library.h"

namespace race {
namespace {

using session::eventually;
using session::LoadedLibrary;
using session::OpenThings;
using session::openThings;

constexpr int kThreads = 8;
constexpr int kUsualRounds = 4;
constexpr int kAllRounds = 200;
constexpr unsigned kRoundSeconds = 30;

int wantedRounds() { return std::getenv("RACE_ALL") != nullptr ? kAllRounds : kUsualRounds; }

/// What a host thread calls first. Returns how many connections it made.
using FirstCall = int (*)(const LoadedLibrary& library);

int readTheName(const LoadedLibrary& library) {
  session::GuardedUnits name;
  constexpr int kUnits = 20;
  EXPECT_EQ(library.IpodGetName(name.units(), kUnits), 0);
  EXPECT_TRUE(name.isUntouchedBut(kUnits));
  return 0;
}

int askWhetherConnected(const LoadedLibrary& library) {
  const int connected = library.IpodIsConnect();
  EXPECT_TRUE(connected == 0 || connected == 1) << connected;
  return 0;
}

int openAList(const LoadedLibrary& library) {
  library.IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  return 0;
}

constexpr FirstCall kConnect = [](const LoadedLibrary& library) { return library.IpodConnect(); };
using FirstCalls = std::array<FirstCall, kThreads>;

/// Exactly one of them connects: the others find that it is under way, or done.
constexpr FirstCalls kOnlyConnect{
    kConnect,           kConnect, kConnect, kConnect, kConnect, kConnect, askWhetherConnected,
    askWhetherConnected};
/// A connect does not wait for another call: while one reads the name, all of them may return.
constexpr FirstCalls kConnectAndOthers{
    kConnect, kConnect, kConnect, kConnect, kConnect, readTheName, askWhetherConnected, openAList};

/// Lets every thread make its first call at once. Returns how many connections they made.
int useFirst(const LoadedLibrary& library, const FirstCalls& calls = kOnlyConnect) {
  std::atomic<int> connections{0};
  StartingLine line(kThreads);
  std::vector<std::thread> threads;
  for (const FirstCall call : calls) {
    threads.emplace_back([&, call] {
      line.cross();
      connections += call(library);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  return connections;
}

class RacedLoading : public testing::Test {
 protected:
  // A sanitizer starts its own thread together with the program's first thread.
  RacedLoading() {
    std::thread([] {}).join();
  }
  void TearDown() override { RecordProperty("cases", cases); }

  /// Loads the library for every round, and compares what is left with what the first round left.
  template <class Use>
  void loadAgainAndAgain(Use use) {
    const unsigned threads = openThings().threads;
    OpenThings before;
    for (; cases <= wantedRounds(); ++cases) {
      const LastWords words("round " + std::to_string(cases));
      alarm(kRoundSeconds);
      {
        const LoadedLibrary library;
        use(library);
      }
      if (puller.joinable()) puller.join();
      ASSERT_FALSE(LoadedLibrary::isLoaded()) << cases;
      ASSERT_EQ(deskRunningThreads(), 0u) << cases;
      ASSERT_TRUE(eventually([&] { return openThings().threads == threads; })) << cases;
      if (cases == 0) before = openThings();
      ASSERT_TRUE(eventually([&] { return openThings() == before; }))
          << cases << ": " << openThings() << ", before: " << before;
    }
  }

  session::SessionIpod ipod;
  std::thread puller;  // works while the library is unloaded
  int cases = 0;
};

TEST_F(RacedLoading, ManyThreadsMakeOneFirstConnection) {
  loadAgainAndAgain([](const LoadedLibrary& library) {
    EXPECT_EQ(useFirst(library), 1);
    EXPECT_EQ(library.IpodIsConnect(), 1);
    EXPECT_EQ(library.IpodDisconnect(), 0);
  });
}

TEST_F(RacedLoading, ManyThreadsMakeDifferentFirstCalls) {
  loadAgainAndAgain([](const LoadedLibrary& library) {
    const int connections = useFirst(library, kConnectAndOthers);
    EXPECT_TRUE(connections == 1 || (connections == 0 && library.IpodConnect() == 1));
    EXPECT_EQ(library.IpodIsConnect(), 1);
    EXPECT_EQ(library.IpodDisconnect(), 0);
  });
}

TEST_F(RacedLoading, UnloadsWhileTheIpodTalks) {
  const auto announcements = announceRates(ipod, std::numeric_limits<int>::max());
  loadAgainAndAgain([this](const LoadedLibrary& library) {
    EXPECT_EQ(useFirst(library), 1);
    library.IpodGetFirstItem(0, IPOD_TRACKS, 0);
    library.IpodSongPlay(cases);
  });
}

// The audio library is slower than the 300 ms in which the reader is asked to stop.
TEST_F(RacedLoading, UnloadsWhenTheReaderReturnsFromTheAudioLibrary) {
  constexpr std::chrono::milliseconds kSlow{450};
  const SlowAudio slow(kSlow);
  loadAgainAndAgain([this](const LoadedLibrary& library) {
    ASSERT_EQ(library.IpodConnect(), 1);
    ipod.pty().act([](simulator::SimulatedIpod& device, simulator::Time now) {
      constexpr uint32_t kRate = 32000;
      device.announceSampleRate(now, kRate);
    });
    ASSERT_TRUE(eventually([] { return SlowAudio::isBusy(); }));
  });
}

TEST_F(RacedLoading, UnloadsWhileTheCableIsPulled) {
  loadAgainAndAgain([this](const LoadedLibrary& library) {
    ipod.pty().plug();
    EXPECT_EQ(useFirst(library), 1);
    puller = std::thread([this] {
      std::this_thread::sleep_for(std::chrono::microseconds(100 * (cases % 20)));
      ipod.pty().unplug();
    });
  });
}

}  // namespace
}  // namespace race
