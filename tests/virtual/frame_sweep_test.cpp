// Every frame from the iPod lost, doubled, late or behind the next one.
#include "virtual/sweep.h"

namespace virtual_session {
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

// A request waits for a second.
constexpr FrameFault kFaults[] = {{"lost", FaultKind::kLost, 0, Outcome::kAnyPromised},
                                  {"doubled", FaultKind::kDoubled, 0, Outcome::kAnyPromised},
                                  {"900-ms-late", FaultKind::kLate, 900, Outcome::kFullSession},
                                  {"1100-ms-late", FaultKind::kLate, 1100, Outcome::kAnyPromised}};

constexpr std::uint64_t kOrders = 40;  // of the threads, for each frame

std::size_t framesOfASession() {
  VirtualSession session(1);
  session.run([&] { session.play(); });
  return session.ipod.counters().messagesSent;
}

Case spoiledCase(std::size_t frame, std::uint64_t seed, const FrameFault& fault) {
  const auto number = static_cast<uint32_t>(frame + 1);
  return {
      "frame:" + std::to_string(frame) + ":" + fault.name, seed,
      [=](VirtualSession& session) {
        session.ipod.faults().add({fault.kind, FaultTarget::everything().nth(number), fault.value});
      },
      [](VirtualSession& session) { return session.ipod.faults().injectedInAll() > 0; },
      fault.outcome};
}

Case swappedCase(std::size_t frame, std::uint64_t seed) {
  return {"frame:" + std::to_string(frame) + ":swapped", seed,
          [=](VirtualSession& session) { session.cable.swapFrame(frame); },
          [](VirtualSession& session) { return session.cable.hasSwapped(); }};
}

class FrameSweep : public Sweep {};

TEST_F(FrameSweep, SpoilsEveryFrame) {
  const std::size_t frames = framesOfASession();
  ASSERT_GT(frames, 10u);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::uint64_t seed = 1; seed <= kOrders; ++seed) {
      for (const FrameFault& fault : kFaults)
        tryPoint(spoiledCase(frame, seed, fault));
    }
  }
  if (isReplay()) return;
  EXPECT_GT(strikes, cases * 9 / 10);
}

TEST_F(FrameSweep, SwapsEveryFrameWithTheNext) {
  const std::size_t frames = framesOfASession();
  for (std::size_t frame = 0; frame < frames; ++frame) {
    for (std::uint64_t seed = 1; seed <= kOrders; ++seed)
      tryPoint(swappedCase(frame, seed));
  }
  if (isReplay()) return;
  EXPECT_GT(strikes, cases * 8 / 10);
}

}  // namespace
}  // namespace virtual_session
