// Every frame from the iPod is lost, doubled, late or after the next one.
#include <tuple>

#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session::frame_sweep {
namespace {

using simulator::Fault;
using simulator::FaultKind;
using simulator::FaultTarget;

struct FrameFault {
  const char* name;
  FaultKind kind;
  uint32_t value;  // as a Fault's
  Outcome outcome;
};

// The first delay is the longest that an answer may have.
constexpr FrameFault kFaults[] = {{"lost", FaultKind::kLost, 0, Outcome::kAnyPromised},
                                  {"doubled", FaultKind::kDoubled, 0, Outcome::kAnyPromised},
                                  {"late", FaultKind::kLate, 0, Outcome::kFullSession},
                                  {"1100-ms-late", FaultKind::kLate, 1100, Outcome::kAnyPromised}};

constexpr std::uint64_t kOrders = 40;  // of the threads, for each frame

std::size_t framesOfASession(const Script& script) {
  VirtualSession session(1, script);
  session.run([&] { session.play(); });
  return session.ipod.counters().messagesSent;
}

Case spoiledCase(const Script& script, std::size_t frame, std::uint64_t seed,
                 const FrameFault& fault) {
  const auto number = static_cast<uint32_t>(frame + 1);
  return {
      script,
      "frame:" + std::to_string(frame) + ":" + fault.name,
      seed,
      [=](VirtualSession& session) {
        session.ipod.faults().add({fault.kind, FaultTarget::everything().nth(number), fault.value});
      },
      [](VirtualSession& session) { return session.ipod.faults().injectedInAll() > 0; },
      fault.outcome};
}

Case swappedCase(const Script& script, std::size_t frame, std::uint64_t seed) {
  return {script, "frame:" + std::to_string(frame) + ":swapped", seed,
          [=](VirtualSession& session) { session.cable.swapFrame(frame); },
          [](VirtualSession& session) { return session.cable.hasSwapped(); }};
}

class FrameSweep : public Sweep,
                   public testing::WithParamInterface<std::tuple<const char*, FrameFault>> {};

std::string nameOfTest(const testing::TestParamInfo<FrameSweep::ParamType>& info) {
  const auto& [script, fault] = info.param;
  return identifierOf({script, fault.name});
}

INSTANTIATE_TEST_SUITE_P(All, FrameSweep,
                         testing::Combine(testing::ValuesIn(kScripts), testing::ValuesIn(kFaults)),
                         nameOfTest);

TEST_P(FrameSweep, SpoilsEveryFrame) {
  const Script& script = scriptCalled(std::get<0>(GetParam()));
  FrameFault fault = std::get<1>(GetParam());
  if (fault.outcome == Outcome::kFullSession) fault.value = static_cast<uint32_t>(script.latest);
  const std::size_t frames = framesOfASession(script);
  ASSERT_GT(frames, 10u);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::uint64_t seed = 1; seed <= ordersOf(script, kOrders); ++seed)
      tryPoint(spoiledCase(script, frame, seed, fault));
  }
  if (isReplay()) return;
  EXPECT_GE(strikes, cases * 9 / 10);
}

class SwapSweep : public Sweep, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, SwapSweep, testing::ValuesIn(kScripts));

TEST_P(SwapSweep, SwapsEveryFrameWithTheNext) {
  const Script& script = scriptCalled(GetParam());
  const std::size_t frames = framesOfASession(script);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::uint64_t seed = 1; seed <= ordersOf(script, kOrders); ++seed)
      tryPoint(swappedCase(script, frame, seed));
  }
  if (isReplay()) return;
  EXPECT_GE(strikes, cases * 8 / 10);
}

}  // namespace
}  // namespace virtual_session::frame_sweep
