// Two and three threads of the host in the exports at once, in many orders.
#include <ipodctl.h>

#include <cstdlib>

#include "support/last_words.h"
#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session::thread_sweep {
namespace {

constexpr int kRounds = 3;

void readTheDevicePage(Host& host) {
  host.deviceText("IpodGetName", IpodGetName);
  host.deviceText("IpodGetSerialNumber", IpodGetSerialNumber);
  host.call("IpodIsConnect", IpodIsConnect);
  host.call("IpodConnect", IpodConnect);
}

void readWhatPlays(Host& host) {
  host.number("IpodGetCurrentPlayStatus", IpodGetCurrentPlayStatus);
  host.number("IpodGetTrackIndex", IpodGetTrackIndex);
  host.trackTexts();
  host.number("IpodGetShuffleMode", IpodGetShuffleMode);
}

void again(void (*work)(Host&), Host& host) {
  for (int round = 0; round < kRounds; ++round)
    work(host);
}

/// The results of each thread, whatever the others did.
std::vector<std::string> roundsOf(const std::vector<std::string>& results) {
  std::vector<std::string> all;
  for (int round = 0; round < kRounds; ++round)
    all.insert(all.end(), results.begin(), results.end());
  return all;
}

Calls callsOf(const Calls& calls, int thread) {
  Calls own;
  std::copy_if(calls.begin(), calls.end(), std::back_inserter(own),
               [thread](const Call& call) { return call.thread == thread; });
  return own;
}

std::uint64_t seeds() {
  const char* const wanted = std::getenv("VIRTUAL_SEEDS");
  if (wanted != nullptr) return std::strtoull(wanted, nullptr, 10);
  return std::getenv("VIRTUAL_ALL") != nullptr ? 2000 : 10;
}

class ThreadSweep : public Sweep, public testing::WithParamInterface<int> {
 protected:
  /// Runs so many threads that do the same, during the session of a script.
  Case besides(const Script& script, std::uint64_t seed) const {
    const int others = GetParam() - 1;
    return {script, std::to_string(GetParam()) + "-threads", seed,
            [=, &script](VirtualSession& session) {
              for (int other = 0; other < others; ++other)
                session.spawn([&](Host& host) { script.play(session, host); });
            },
            [](VirtualSession&) { return true; }};
  }
};

INSTANTIATE_TEST_SUITE_P(All, ThreadSweep, testing::Values(2, 3));

// They connect and disconnect during each other's calls.
TEST_P(ThreadSweep, KeepsItsPromisesToThreadsThatDoEverythingAtOnce) {
  for (std::uint64_t seed = 1; seed <= seeds(); ++seed) {
    tryCase(besides(shortScript(), seed));
    tryCase(besides(referenceScript(), seed));
  }
}

TEST_F(Sweep, GivesEachThreadItsOwnAnswers) {
  for (std::uint64_t seed = 1; seed <= 10 * seeds(); ++seed) {
    const std::string name = "own-answers:seed-" + std::to_string(seed);
    if (!isWanted(name)) continue;
    const LastWords words(replayCommand(name));
    SCOPED_TRACE(replayCommand(name));
    VirtualSession session(seed);
    const std::string stuck = session.run([&] {
      EXPECT_EQ(IpodConnect(), 1);
      IpodGetFirstItem(0, IPOD_TRACKS, 0);
      IpodSongPlay(0);
      IpodCommand(IPOD_PAUSE);
      session.spawn([](Host& host) { again(readTheDevicePage, host); });
      session.spawn([](Host& host) { again(readWhatPlays, host); });
      session.awaitOthers();
      IpodDisconnect();
    });
    showReplay(session.world.trace());
    ASSERT_EQ(stuck, "");
    EXPECT_EQ(findFault(session.meanwhile, exportPromises()), "");
    EXPECT_EQ(resultsOf(callsOf(session.meanwhile, 1)),
              roundsOf({"IpodGetName 0 Pod", "IpodGetSerialNumber 0 8K821D0ZY5N<0>",
                        "IpodIsConnect 1", "IpodConnect 0"}));
    EXPECT_EQ(resultsOf(callsOf(session.meanwhile, 2)),
              roundsOf({"IpodGetCurrentPlayStatus 0 2", "IpodGetTrackIndex 1 0",
                        "IpodGetTrackInfo 0 0 Anna First Able <5>Rock UnKnown",
                        "IpodGetShuffleMode 0 1"}));
    ++cases;
    ++strikes;
  }
}

}  // namespace
}  // namespace virtual_session::thread_sweep
