// An iPod accepts no more bytes, and is pulled while a thread waits to write.
#include <ipodctl.h>

#include <string>
#include <tuple>

#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session::stall_sweep {
namespace {

using std::chrono::milliseconds;
using virtual_platform::Direction;
using virtual_platform::Loss;

constexpr milliseconds kShort(100);
constexpr milliseconds kLong(3000);  // the waits of the threads after the writer end earlier

Case stalledCase(const Script& script, std::size_t at, milliseconds patience, Loss loss) {
  Case made{script,
            "takes:" + std::to_string(at) + ":for-" + std::to_string(patience.count()) +
                "-ms:" + nameOf(loss),
            at + 1, [=](VirtualSession& session) { session.cable.stopReading(at, patience, loss); },
            [](VirtualSession& session) { return session.cable.hasStoppedReading(); }};
  made.stall = patience;
  return made;
}

class StallSweep : public Sweep, public testing::WithParamInterface<std::tuple<const char*, Loss>> {
 protected:
  StallSweep() { thinning = 4; }
};

std::string nameOfTest(const testing::TestParamInfo<StallSweep::ParamType>& info) {
  return identifierOf({std::get<0>(info.param), nameOf(std::get<1>(info.param))});
}

INSTANTIATE_TEST_SUITE_P(All, StallSweep,
                         testing::Combine(testing::ValuesIn(kScripts), testing::ValuesIn(kLosses)),
                         nameOfTest);

TEST_P(StallSweep, AtEveryByte) {
  const Script& script = scriptCalled(std::get<0>(GetParam()));
  const Loss loss = std::get<1>(GetParam());
  const std::size_t bytes = bytesOfASession(script, Direction::kToIpod);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 0; at < bytes; ++at) {
    tryPoint(stalledCase(script, at, kShort, loss));
    tryPoint(stalledCase(script, at, kLong, loss));
  }
  if (isReplay()) return;
  EXPECT_GT(strikes, cases * 9 / 10);
}

void ask(Host& host) {
  for (int i = 0; i < 100; ++i) {
    host.call("IpodIsConnect", IpodIsConnect);
    host.call("IpodIsPlayAll", IpodIsPlayAll);
    host.call("IpodIsTabActive", IpodIsTabActive);
    Sleep(20);
  }
}

void disconnect(Host& host) { host.call("IpodDisconnect", IpodDisconnect); }

/// A second thread of the host that does this as soon as a write waits, or if none ever waits.
void spawnBeside(VirtualSession& session, void (*calls)(Host&)) {
  session.spawn([&session, calls](Host& host) {
    for (int i = 0; i < 300 && !session.cable.hasStoppedReading(); ++i)
      Sleep(10);
    calls(host);
  });
}

class CompanionSweep : public Sweep, public testing::WithParamInterface<Loss> {
 protected:
  void tryBesideEachByte(const std::string& what, void (*calls)(Host&), Time stallOfTheCalls) {
    const std::size_t bytes = bytesOfASession(shortScript(), Direction::kToIpod);
    for (std::size_t at = 0; at < bytes; ++at) {
      Case made = stalledCase(shortScript(), at, kLong, GetParam());
      made.place += ":during-" + what;
      made.disturb = [disturb = made.disturb, calls](VirtualSession& session) {
        disturb(session);
        spawnBeside(session, calls);
      };
      made.hasStruck = [=](VirtualSession& session) {
        EXPECT_EQ(findFault(session.meanwhile, exportPromises(), stallOfTheCalls), "") << at;
        return session.cable.hasStoppedReading();
      };
      tryPoint(made);
    }
    if (isReplay()) return;
    EXPECT_GT(strikes, 0);
  }
};

std::string nameOfLoss(const testing::TestParamInfo<Loss>& info) {
  return identifierOf({nameOf(info.param)});
}

INSTANTIATE_TEST_SUITE_P(All, CompanionSweep, testing::ValuesIn(kLosses), nameOfLoss);

TEST_P(CompanionSweep, QuestionsWithoutTheLockAreAnsweredAtOnce) {
  tryBesideEachByte("questions", ask, Time(0));
}

// It waits for the lock, which other calls of the session may take first.
TEST_P(CompanionSweep, DisconnectEndsAfterTheStall) {
  constexpr milliseconds kSession(30000);
  tryBesideEachByte("disconnect", disconnect, kLong + kSession);
}

}  // namespace
}  // namespace virtual_session::stall_sweep
