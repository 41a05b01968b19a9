// The iPod is pulled at every byte, and sessions run in many orders of the threads:
// VIRTUAL_SEEDS=<count> sets their number for the short session; the long ones have a tenth.
#include "virtual/sweep.h"

#include <cstdlib>
#include <tuple>

#include "support/replay.h"

namespace virtual_session {
namespace {

using virtual_platform::Direction;
using virtual_platform::Loss;

constexpr std::uint64_t kOrders = 500;

// The answer to the last command; in some orders of the threads the link closes before it is read.
constexpr int kFarewellBytes = 10;

Case cutCase(const Script& script, Direction direction, std::size_t at, Loss loss) {
  return {script, nameOf(direction) + ":" + std::to_string(at) + ":" + nameOf(loss), at + 1,
          [=](VirtualSession& session) { session.cable.unplugAfter(direction, at, loss); },
          [](VirtualSession& session) { return !session.cable.isPlugged(); }};
}

class UnplugSweep : public Sweep,
                    public testing::WithParamInterface<std::tuple<const char*, Direction, Loss>> {};

std::string nameOfTest(const testing::TestParamInfo<UnplugSweep::ParamType>& info) {
  const auto& [script, direction, loss] = info.param;
  return identifierOf({script, nameOf(direction), nameOf(loss)});
}

INSTANTIATE_TEST_SUITE_P(All, UnplugSweep,
                         testing::Combine(testing::ValuesIn(kScripts),
                                          testing::ValuesIn(kDirections),
                                          testing::ValuesIn(kLosses)),
                         nameOfTest);

TEST_P(UnplugSweep, AtEveryByte) {
  const Script& script = scriptCalled(std::get<0>(GetParam()));
  const auto [name, direction, loss] = GetParam();
  const std::size_t bytes = bytesOfASession(script, direction);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 0; at < bytes; ++at)
    tryPoint(cutCase(script, direction, at, loss));
  if (isReplay()) return;
  EXPECT_GE(strikes + kFarewellBytes, cases);
}

class OrderSweep : public Sweep, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, OrderSweep, testing::ValuesIn(kScripts),
                         [](const auto& each) { return std::string(each.param); });

std::uint64_t wantedOrders(const Script& script) {
  const char* const wanted = std::getenv("VIRTUAL_SEEDS");
  if (wanted == nullptr) return ordersOf(script, kOrders);
  const std::uint64_t orders = std::strtoull(wanted, nullptr, 10);
  return ordersOf(script, orders, orders / 10);
}

TEST_P(OrderSweep, OfTheThreads) {
  const Script& script = scriptCalled(GetParam());
  const std::uint64_t orders = wantedOrders(script);
  for (std::uint64_t seed = 1; seed <= orders; ++seed)
    tryCase({script, "order", seed, [](VirtualSession&) {}, [](VirtualSession&) { return false; }});
}

}  // namespace
}  // namespace virtual_session
