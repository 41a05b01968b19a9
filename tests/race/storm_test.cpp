// Many host threads in all exports at once, while the iPod announces sample rates and its cable is
// pulled and plugged.

#include <ipodctl.h>
#include <unistd.h>

#include <cstdlib>
#include <limits>
#include <random>
#include <thread>

#include "race/announced_rates.h"
#include "race/race_test.h"

namespace race {
namespace {

constexpr int kThreads = 8;
constexpr unsigned kSeed = 20;
constexpr std::chrono::seconds kUsualTime{2};
constexpr unsigned kSpareSeconds = 120;

using Random = std::mt19937;
using Pause = StoppableThread::Pause;

Pause upTo(Random& random, unsigned longest) { return Pause(random() % (1000 * longest)); }

std::chrono::seconds wantedTime() {
  const char* const wanted = std::getenv("RACE_SECONDS");
  return wanted != nullptr ? std::chrono::seconds(std::atoi(wanted)) : kUsualTime;
}

/// Returns the host's next call. IpodConnect does not wait for the lock: it is picked more often,
/// or it would hardly ever succeed.
const Export& pick(Random& random) {
  const auto& calls = allExports();
  const size_t place = random() % (calls.size() + 4);
  return place < calls.size() ? calls[place] : calls.front();
}

class Storm : public RaceTest {
 protected:
  static void callAtRandom(unsigned seed, Duration end, Tally& tally) {
    Random random(seed);
    while (now() < end) {
      tally.add(makeCall(pick(random), static_cast<unsigned>(random()), now));
      std::this_thread::sleep_for(upTo(random, 3));
    }
  }

  /// Pulls the cable and plugs it again, at random.
  std::unique_ptr<StoppableThread> handAtTheCable() {
    return std::make_unique<StoppableThread>([this, random = Random(kSeed)]() mutable {
      const bool pulls =
          ipod.look([](simulator::SimulatedIpod& device) { return device.plugged(); });
      if (pulls) {
        ipod.pty().unplug();
        ++strikes;
      } else {
        ipod.pty().plug();
        ipod.takeAudioCalls();  // or they would accumulate
      }
      return upTo(random, pulls ? 100 : 600);
    });
  }

  void rage(std::vector<Tally>& tallies) {
    const auto announcements = announceRates(ipod, std::numeric_limits<int>::max());
    const auto hand = handAtTheCable();
    const Duration end = now() + wantedTime();
    std::vector<std::thread> threads;
    for (Tally& tally : tallies) {
      const unsigned seed = kSeed + 1 + static_cast<unsigned>(threads.size());
      threads.emplace_back([=, &tally] { callAtRandom(seed, end, tally); });
    }
    for (std::thread& thread : threads)
      thread.join();
  }
};

TEST_F(Storm, LeavesAWorkingLibrary) {
  alarm(static_cast<unsigned>(wantedTime().count()) + kSpareSeconds);
  std::vector<Tally> tallies(kThreads);
  rage(tallies);
  constexpr int kWaits = kThreads * 8;
  int calls = 0;
  int connections = 0;
  for (const Tally& tally : tallies) {
    check(tally, kWaits);
    calls += tally.calls;
    connections += tally.connections;
  }
  IpodDisconnect();
  recover();
  EXPECT_GT(strikes, 0);
  EXPECT_GT(connections, 0);
  RecordProperty("calls", calls);
  RecordProperty("connections", connections);
  RecordProperty("pulls", strikes);
  cases = strikes = 1;
}

}  // namespace
}  // namespace race
