// The iPod pulled at every byte, and orders of the threads: VIRTUAL_SEEDS=<count> tries so many.
#include "virtual/sweep.h"

#include <cstdlib>
#include <tuple>

namespace virtual_session {
namespace {

using virtual_platform::Direction;
using virtual_platform::Loss;

constexpr const char* kLossNames[] = {"end-of-file", "read-error", "write-error", "silence",
                                      "gone"};

// The answer to the last command; in some orders of the threads the link closes before it is read.
constexpr int kFarewellBytes = 10;

Case cutCase(Direction direction, std::size_t at, Loss loss) {
  return {nameOf(direction) + ":" + std::to_string(at) + ":" + kLossNames[static_cast<int>(loss)],
          at + 1, [=](VirtualSession& session) { session.cable.unplugAfter(direction, at, loss); },
          [](VirtualSession& session) { return !session.cable.isPlugged(); }};
}

class UnplugSweep : public Sweep,
                    public testing::WithParamInterface<std::tuple<Direction, Loss>> {};

INSTANTIATE_TEST_SUITE_P(All, UnplugSweep,
                         testing::Combine(testing::ValuesIn(kDirections),
                                          testing::Values(Loss::kEndOfFile, Loss::kReadError,
                                                          Loss::kWriteError, Loss::kSilence,
                                                          Loss::kGone)));

TEST_P(UnplugSweep, AtEveryByte) {
  const auto [direction, loss] = GetParam();
  const std::size_t bytes = bytesOfASession(direction);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 0; at < bytes; ++at)
    tryCase(cutCase(direction, at, loss));
  if (isReplay()) return;
  EXPECT_GE(strikes + kFarewellBytes, static_cast<int>(bytes));
}

TEST_F(Sweep, OfOrdersOfTheThreads) {
  const char* const wanted = std::getenv("VIRTUAL_SEEDS");
  const std::uint64_t seeds = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 500;
  for (std::uint64_t seed = 1; seed <= seeds; ++seed)
    tryCase({"order", seed, [](VirtualSession&) {}, [](VirtualSession&) { return false; }});
}

}  // namespace
}  // namespace virtual_session
