#include "race/race_test.h"

#include <ipodctl.h>

#include <algorithm>
#include <cstdlib>

#include "support/host_screen.h"

namespace race {
namespace {

using session::eventually;
using session::openThings;
using simulator::SimulatedIpod;
using std::chrono::milliseconds;

// It does not divide the number of exports.
constexpr size_t kSlice = 13;
// For a call that gets its answers at once, on a busy Linux host under a sanitizer.
constexpr std::chrono::seconds kSlack{3};

int inMilliseconds(Duration time) {
  return static_cast<int>(std::chrono::duration_cast<milliseconds>(time).count());
}

}  // namespace

Duration now() { return std::chrono::steady_clock::now().time_since_epoch(); }

bool isInSlice(size_t point) { return std::getenv("RACE_ALL") != nullptr || point % kSlice == 0; }

// The first connection creates objects that stay permanently.
void RaceTest::SetUp() {
  const unsigned threads = openThings().threads;
  ASSERT_EQ(IpodConnect(), 1);
  expectASession();
  IpodDisconnect();
  ASSERT_TRUE(eventually([&] { return openThings().threads == threads; }));
  atStart = openThings();
  prepare();
}

void RaceTest::TearDown() {
  IpodDisconnect();
  EXPECT_TRUE(eventually([this] { return openThings() == atStart; }))
      << openThings() << ", at the start: " << atStart;
  RecordProperty("cases", cases);
  RecordProperty("struck", strikes);
  RecordProperty("longest_ms", inMilliseconds(longest));
}

void RaceTest::prepare() {
  if (IpodIsConnect() == 0) {
    ASSERT_EQ(IpodConnect(), 1);
  }
  IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  IpodGetFirstItem(1, IPOD_TRACKS, 1);
  IpodValidateUpDownTree();
  IpodSongPlay(0);
}

void RaceTest::recover() {
  ipod.look([](SimulatedIpod& device) { device.faults().clear(); });
  if (!ipod.look([](SimulatedIpod& device) { return device.plugged(); })) {
    IpodDisconnect();
    ipod.pty().plug();
  }
  if (IpodIsConnect() == 0) {
    ASSERT_EQ(IpodConnect(), 1);
  }
  readEverything();
  expectASession();
}

// A late answer must not be mistaken for an answer of the next session. Both sides work in order:
// when the iPod has a new mode, it has answered every earlier request, and when the library has
// received a rate that only this function announces, it has read all those answers.
void RaceTest::readEverything() {
  const auto repeats = [](const SimulatedIpod& device) { return device.player().repeat(); };
  const simulator::Repeat before = ipod.look(repeats);
  IpodSetRepeatMode(before == simulator::Repeat::kOff ? IPOD_MODE_TRACKS : IPOD_MODE_OFF);
  ASSERT_TRUE(
      ipod.waitUntil([&](const SimulatedIpod& device) { return repeats(device) != before; }));
  ipod.takeAudioCalls();
  ipod.pty().act([](SimulatedIpod& device, simulator::Time time) {
    constexpr uint32_t kRate = 16000;
    device.announceSampleRate(time, kRate);
  });
  ASSERT_TRUE(ipod.log.waitFor("SelectFrequency(16000 Hz)"));
}

void RaceTest::expectASession() {
  EXPECT_EQ(session::ipodName(), "Demo iPod");
  EXPECT_NE(IpodGetFirstItem(0, IPOD_GENRES, 0), nullptr);
  EXPECT_NE(session::itemName(), "");
  EXPECT_EQ(IpodSongPlay(0), 0);
  EXPECT_EQ(session::playStatusAndIndex(), std::pair(int{IPOD_PLAYING}, 0));
}

void RaceTest::check(const Tally& tally, int waits) {
  for (const MadeCall& broken : tally.broken)
    ADD_FAILURE() << describe(broken);
  longest = std::max(longest, tally.slowest.took);
  EXPECT_LE(tally.slowest.took, std::chrono::seconds(waits) + kSlack) << describe(tally.slowest);
}

}  // namespace race
