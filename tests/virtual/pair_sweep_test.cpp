// Two faults: in one session, and in two successive sessions.
#include "support/counted_heap.h"
#include "support/replay.h"
#include "virtual/disturbances.h"
#include "virtual/failures.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using virtual_platform::failuresOf;

/// Two faults of the same kind at two places can only occur one after the other.
bool canMeet(const Disturbance& first, const Disturbance& second) {
  return first.slot != second.slot;
}

using TryPair = std::function<void(const Disturbance&, const Disturbance&)>;

class PairSweep : public Sweep {
 protected:
  PairSweep() : disturbances(disturbancesOf(shortScript())) {
    thinning = 4;
    session::setRefusal([] { return failuresOf("allocation").strikesNext(); });
  }
  ~PairSweep() override { session::setRefusal(nullptr); }

  /// Tries every ordered pair, each with its own order of the threads. A pair has struck if both of
  /// its faults occurred.
  void tryPairs(const TryPair& tryPair) {
    ASSERT_GT(disturbances.size(), 60u);
    for (const Disturbance& first : disturbances) {
      for (const Disturbance& second : disturbances)
        tryPair(first, second);
    }
    strikes = bothStruck;
    if (isReplay()) return;
    EXPECT_GT(strikes, cases / 3);  // the first fault often prevents the second
  }

  void tryTogether(const Disturbance& first, const Disturbance& second) {
    if (!canMeet(first, second)) return;
    Case made = pairIn("together", first, second);
    made.disturb = [&](VirtualSession& session) {
      first.strike(session);
      second.strike(session);
    };
    made.hasStruck = [&](VirtualSession& session) {
      const bool one = first.hasStruck(session);
      const bool other = second.hasStruck(session);
      if (one && other) ++bothStruck;
      return one || other;
    };
    tryPoint(made);
  }

  void tryOneAfterTheOther(const Disturbance& first, const Disturbance& second) {
    Case made = pairIn("after", second, first);
    bool firstStruck = false;
    made.disturb = first.strike;
    made.hasStruck = [&](VirtualSession& session) {
      return firstStruck = first.hasStruck(session);
    };
    made.disturbNext = second.strike;
    made.hasStruckNext = [&](VirtualSession& session) {
      const bool struck = second.hasStruck(session);
      if (firstStruck && struck) ++bothStruck;
      return struck;
    };
    tryPoint(made);
  }

 private:
  Case pairIn(const std::string& where, const Disturbance& first, const Disturbance& second) {
    Case made{shortScript(), first.name + ":" + where + ":" + second.name, ++seed, {}, {}};
    made.stall = std::chrono::milliseconds(kStallOfADisturbance);
    return made;
  }

  const std::vector<Disturbance> disturbances;
  std::uint64_t seed = 0;
  int bothStruck = 0;
};

TEST_F(PairSweep, InOneSession) {
  tryPairs(
      [this](const Disturbance& first, const Disturbance& second) { tryTogether(first, second); });
}

TEST_F(PairSweep, InOneSessionAndInTheNext) {
  tryPairs([this](const Disturbance& first, const Disturbance& second) {
    tryOneAfterTheOther(first, second);
  });
}

}  // namespace
}  // namespace virtual_session
