// Every export at the same time as every other, while the iPod announces sample rates, reports what
// plays and is pulled.

#include <ipodctl.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "race/announced_rates.h"
#include "race/race_test.h"
#include "race/starting_line.h"
#include "support/last_words.h"

namespace race {
namespace {

using simulator::SimulatedIpod;
using std::chrono::microseconds;

constexpr unsigned kPairSeconds = 60;
constexpr int kMostRates = 20;
constexpr int kMostRepetitions = 500;

/// One thread of a pair: makes its call once, or repeats a quick call during the other one.
class Side {
 public:
  explicit Side(const Export& what) : call(what) {}

  void run(const Side& other, unsigned variety, StartingLine& line, microseconds pause) {
    line.cross();
    spin(pause);
    begun = true;
    int together = 0;
    do {
      if (other.isUnderWay()) ++together;
      made.add(makeCall(call, variety, now));
    } while (call.asksNothing() && !other.ended && together < kMostRepetitions);
    ended = true;
    met = together > 0;
  }

  bool isUnderWay() const { return begun && !ended; }

  const Export& call;
  Tally made;
  bool met = false;  ///< the other call was under way when this one began

 private:
  // A sleep would end long after the other thread's call.
  static void spin(microseconds pause) {
    for (const Duration end = now() + pause; now() < end;) {
    }
  }

  std::atomic<bool> begun{false};
  std::atomic<bool> ended{false};
};

/// An ordered pair of exports, and what happens meanwhile.
struct Pair {
  size_t first;
  size_t second;

  size_t number() const { return first * allExports().size() + second; }
  unsigned variety() const { return static_cast<unsigned>(first * 7 + second * 5); }
  microseconds headStart() const { return microseconds(10 * (number() % 8)); }
  bool isPulled() const { return number() % 4 == 2; }
  microseconds untilPull() const { return microseconds(150 * (number() % 16)); }
  bool isInterrupted() const { return number() % 3 == 1; }
  /// Returns whether every call must get its answer. Two exports disturb others: one closes the
  /// link, one asks the iPod without the lock.
  bool isQuiet() const {
    return !isPulled() && !isInterrupted() && !disturbs(first) && !disturbs(second);
  }
  static bool disturbs(size_t place) {
    const std::string name = allExports()[place].name;
    return name == "IpodDisconnect" || name == "IpodGetNumberOfPlaylist";
  }
  /// Unsolicited messages before one of the first answers: the position in the track.
  simulator::Fault interruption() const {
    const auto answer = static_cast<uint32_t>(1 + number() % 4);
    constexpr uint32_t kCount = 2;
    return {simulator::FaultKind::kNotificationsBefore,
            simulator::FaultTarget::everything().nth(answer), kCount, 0};
  }
};

// Each test has a share of the pairs and begins with a new connection.
constexpr size_t kShares = 7;

class RacedPairs : public RaceTest, public testing::WithParamInterface<size_t> {
 protected:
  void race(const Pair& pair);
  void run(const Pair& pair, Side& first, Side& second);
};

INSTANTIATE_TEST_SUITE_P(Share, RacedPairs, testing::Range(size_t{0}, kShares));

void RacedPairs::run(const Pair& pair, Side& first, Side& second) {
  const auto announcements = announceRates(ipod, kMostRates);
  StartingLine line(pair.isPulled() ? 3 : 2);
  std::thread firstThread([&] { first.run(second, pair.variety(), line, microseconds(0)); });
  std::thread secondThread([&] { second.run(first, pair.variety() + 1, line, pair.headStart()); });
  if (pair.isPulled()) {
    line.cross();
    std::this_thread::sleep_for(pair.untilPull());
    ipod.pty().unplug();
  }
  firstThread.join();
  secondThread.join();
}

void expectAnswers(const Tally& tally) {
  for (const MadeCall& missed : tally.unanswered)
    ADD_FAILURE() << "without an answer: " << describe(missed);
}

void RacedPairs::race(const Pair& pair) {
  alarm(kPairSeconds);
  prepare();
  Side first(allExports()[pair.first]);
  Side second(allExports()[pair.second]);
  if (pair.isInterrupted()) {
    ipod.look([&](SimulatedIpod& device) { device.faults().add(pair.interruption()); });
  }
  run(pair, first, second);
  const int waits = first.call.waits.inAll() + second.call.waits.inAll();
  check(first.made, waits);
  check(second.made, waits);
  if (pair.isQuiet()) {
    expectAnswers(first.made);
    expectAnswers(second.made);
  }
  recover();
  ++cases;
  if (first.met || second.met) ++strikes;
}

TEST_P(RacedPairs, KeepTheirPromisesAndLeaveAWorkingLibrary) {
  const auto& calls = allExports();
  for (size_t first = GetParam(); first < calls.size(); first += kShares) {
    for (size_t second = 0; second < calls.size(); ++second) {
      const Pair pair{first, second};
      if (!isInSlice(pair.number())) continue;
      const std::string names = std::string(calls[first].name) + " during " + calls[second].name;
      SCOPED_TRACE(names);
      const LastWords words(names);
      ASSERT_NO_FATAL_FAILURE(race(pair));
    }
  }
  EXPECT_GT(cases, 0);
}

}  // namespace
}  // namespace race
