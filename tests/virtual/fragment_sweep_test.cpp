// The bytes from the iPod in reads of every size. Nothing is lost, so that every session succeeds.
#include <algorithm>
#include <tuple>

#include "virtual/sweep.h"

namespace virtual_session::fragment_sweep {
namespace {

using std::chrono::milliseconds;
using virtual_platform::Delivery;
using virtual_platform::Direction;

constexpr int kOrders = 13;  // of the threads, where there are no places to try

Case deliveredCase(const Script& script, const std::string& how, std::uint64_t seed,
                   const Delivery& delivery) {
  return {script,
          how,
          seed,
          [=](VirtualSession& session) { session.cable.deliver(delivery); },
          [](VirtualSession&) { return true; },
          Outcome::kFullSession};
}

std::ptrdiff_t successfulReads(const Delivery& delivery) {
  VirtualSession session(1);
  session.cable.deliver(delivery);
  session.run([&] { session.play(); });
  const auto& trace = session.world.trace();
  return std::count_if(trace.begin(), trace.end(), [](const std::string& call) {
    return call.find("ReadFile") != std::string::npos && call.find("error 0") != std::string::npos;
  });
}

TEST(Delivery, DecidesHowManyReadsThereAre) {
  const std::ptrdiff_t usual = successfulReads({});
  Delivery delivery;
  delivery.pauseAt = 5;  // of the 13 bytes of the first answer
  delivery.pause = milliseconds(1);
  EXPECT_EQ(successfulReads(delivery), usual + 1);
  delivery = {};
  delivery.longestRead = 1;
  EXPECT_GT(successfulReads(delivery), 5 * usual);
  delivery = {};
  delivery.gathering = milliseconds(900);
  EXPECT_LT(successfulReads(delivery), usual);
}

class SplitSweep : public Sweep,
                   public testing::WithParamInterface<std::tuple<const char*, int>> {};

INSTANTIATE_TEST_SUITE_P(All, SplitSweep,
                         testing::Combine(testing::ValuesIn(kScripts),
                                          testing::Values(0, 1, 700)));  // ms

TEST_P(SplitSweep, SplitsAtEveryByte) {
  const Script& script = scriptCalled(std::get<0>(GetParam()));
  const int pause = std::get<1>(GetParam());
  const std::size_t bytes = bytesOfASession(script, Direction::kFromIpod);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 1; at < bytes; ++at) {
    Delivery delivery;
    delivery.pauseAt = at;
    delivery.pause = milliseconds(pause);
    tryPoint(deliveredCase(script,
                           "split:" + std::to_string(at) + ":" + std::to_string(pause) + "-ms",
                           at + 1, delivery));
  }
}

class FragmentSweep : public Sweep, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, FragmentSweep, testing::ValuesIn(kScripts));

TEST_P(FragmentSweep, ReadsFewBytesAtATime) {
  const Script& script = scriptCalled(GetParam());
  for (std::size_t longest = 1; longest <= 20; ++longest) {
    for (std::uint64_t seed = 1; seed <= ordersOf(script, kOrders); ++seed) {
      Delivery delivery;
      delivery.longestRead = longest;
      tryPoint(deliveredCase(script, "reads-of:" + std::to_string(longest), seed, delivery));
    }
  }
}

TEST_P(FragmentSweep, ReadsEverythingThatIsThereAtOnce) {
  const Script& script = scriptCalled(GetParam());
  for (int gathering = 1; gathering <= script.latest; gathering += 31) {  // ms
    for (std::uint64_t seed = 1; seed <= ordersOf(script, kOrders); ++seed) {
      Delivery delivery;
      delivery.gathering = milliseconds(gathering);
      tryPoint(
          deliveredCase(script, "gathered:" + std::to_string(gathering) + "-ms", seed, delivery));
    }
  }
}

}  // namespace
}  // namespace virtual_session::fragment_sweep
