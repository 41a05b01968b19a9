// How the head unit connects, notices that the iPod has gone, and connects again.
#include <gmock/gmock.h>
#include <malloc.h>

#include <fstream>

#include "head_unit_bench.h"

namespace serve_test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::HasSubstr;

bool isAway(const json& state) {
  const std::string stage = state["connection"]["stage"];
  return stage != "ready" && stage != "settling";
}

/// Returns how long it takes until the state no longer says that the iPod is ready.
milliseconds timeUntilAway(HeadUnitBench& bench) {
  return session::durationOf([&] { EXPECT_TRUE(bench.waitFor(isAway)); });
}

TEST(HeadUnitConnection, IsMadeWhenAnIpodIsPluggedIn) {
  HeadUnitBench bench;
  bench.ipod().pty().unplug();
  ASSERT_TRUE(bench.waitForStage("absent") || bench.waitForStage("lost"));
  EXPECT_EQ(bench.list("artists").refusal, tool::Refusal::kNoIpod);
  bench.ipod().pty().plug();
  EXPECT_TRUE(bench.waitForStage("ready", seconds(8)));
  const json state = bench.state();
  EXPECT_EQ(state["ipod"]["serial"], "8K821D0ZY5N");
  EXPECT_EQ(state["audio"]["sample_rate"], 44100);
  EXPECT_EQ(state["modes"], (json{{"shuffle", "off"}, {"repeat", "off"}}));
}

TEST(HeadUnitConnection, LeavesTheIpodAloneForASecond) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("settling"));
  const auto received = [&] {
    return bench.ipod().look([](auto& ipod) { return ipod.counters().messagesReceived; });
  };
  std::this_thread::sleep_for(milliseconds(200));
  const size_t before = received();
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_EQ(received(), before);
  EXPECT_EQ(bench.stage(), "settling");
}

TEST(HeadUnitConnection, ShowsAPulledCableWithinASecondAndReturns) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const uint64_t before = bench.generation();
  bench.ipod().pty().unplug();
  const milliseconds taken = session::durationOf([&] { EXPECT_TRUE(bench.waitForStage("lost")); });
  EXPECT_LE(taken, milliseconds(1100));  // with 100 ms until the event
  EXPECT_THAT(bench.state()["connection"]["message"], HasSubstr("cable"));
  EXPECT_EQ(bench.list("artists").refusal, tool::Refusal::kNoIpod);
  bench.ipod().pty().plug();
  EXPECT_TRUE(bench.waitForStage("ready", seconds(7)));
  EXPECT_EQ(bench.generation(), before + 1);
  EXPECT_FALSE(bench.list("artists").refusal);
}

TEST(HeadUnitConnection, ShowsSilenceWithinThreeSeconds) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.ipod().addFault("silence");
  EXPECT_LE(timeUntilAway(bench), milliseconds(3100));
  EXPECT_TRUE(bench.waitForStage("lost", seconds(2)));
}

TEST(HeadUnitConnection, RefusesWaitingRequestsWhenTheIpodFallsSilent) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.ipod().addFault("silence");
  EXPECT_EQ(bench.list("albums").refusal, tool::Refusal::kNoIpod);
}

TEST(HeadUnitConnection, SurvivesALostAnswer) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const uint64_t before = bench.generation();
  bench.ipod().addFault("lost@04:001E#2");
  ASSERT_TRUE(bench.waitForStage("odd"));
  ASSERT_TRUE(bench.waitForStage("ready"));
  EXPECT_EQ(bench.generation(), before);
}

TEST(HeadUnitConnection, SurvivesAnswersThatArriveTwice) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const uint64_t before = bench.generation();
  bench.ipod().addFault("doubled");
  for (const char* path : {"artists", "albums", "genres/0/artists"})
    bench.list(path);
  bench.ipod().look([](auto& ipod) { ipod.faults().clear(); });
  EXPECT_TRUE(bench.waitForStage("ready"));
  EXPECT_EQ(bench.generation(), before);
  EXPECT_FALSE(bench.list("albums").refusal);
}

TEST(HeadUnitConnection, IsMadeAgainOnRequest) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const uint64_t before = bench.generation();
  EXPECT_FALSE(bench.unit().reconnect(waiting).refusal);
  EXPECT_TRUE(bench.waitFor([&](const json& state) { return state["generation"] > before; }));
}

TEST(HeadUnitConnection, IsMadeAgainWithALogo) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  EXPECT_EQ(bench.state()["logo"]["file"], nullptr);
  const std::string bitmap = session::contentOf(session::headUnitLogo());
  EXPECT_FALSE(bench.unit().setLogo(bitmap, waiting).refusal);
  EXPECT_TRUE(bench.waitFor([](const json& state) { return state["generation"] == 2; }));
  EXPECT_EQ(bench.state()["logo"]["file"], "logo_zel.bmp");
  EXPECT_GT(bench.ipod().look([](auto& ipod) { return ipod.display().shownCount(); }), 0U);
  EXPECT_FALSE(bench.unit().setLogo("", waiting).refusal);
  EXPECT_EQ(bench.state()["logo"]["file"], nullptr);
}

TEST(HeadUnitConnection, EndsWithTheHeadUnitInTheMiddleOfAnAttempt) {
  HeadUnitBench bench;
  bench.ipod().addFault("silence");
  EXPECT_LE(session::durationOf([&] { bench.end(); }), seconds(5));
}

/// Bytes of the heap that this process uses.
size_t memoryInUse() { return mallinfo2().uordblks; }

/// SERVE_PULLS says how often the cable is pulled; a part of it without.
TEST(HeadUnitConnection, ReturnsAfterEveryPull) {
  const char* const asked = std::getenv("SERVE_PULLS");
  const int pulls = asked != nullptr ? std::atoi(asked) : 5;
  const int settled = std::min(10, pulls / 2);
  HeadUnitBench bench;
  // What the bench and the simulated iPod note would grow.
  bench.ipod().look([](auto& ipod) { ipod.keepNoHistory(); });
  session::OpenThings before;
  size_t memory = 0;
  for (int i = 0; i < pulls; ++i) {
    ASSERT_TRUE(bench.waitForStage("ready", seconds(8))) << "pull " << i;
    ASSERT_FALSE(bench.list("artists").refusal) << "pull " << i;
    bench.ipod().log.clear();
    if (i == settled) {
      before = session::openThings();
      memory = memoryInUse();
    }
    if (i >= settled) ASSERT_EQ(session::openThings(), before) << "pull " << i;
    bench.ipod().pty().unplug();
    ASSERT_TRUE(bench.waitForStage("lost", seconds(3))) << "pull " << i;
    bench.ipod().pty().plug();
  }
  EXPECT_EQ(bench.generation(), static_cast<uint64_t>(pulls));
  EXPECT_LE(memoryInUse(), memory + 64 * 1024);
  RecordProperty("pulls", pulls);
  RecordProperty("heap_kib_start", static_cast<int>(memory / 1024));
  RecordProperty("heap_kib_end", static_cast<int>(memoryInUse() / 1024));
}

}  // namespace
}  // namespace serve_test
