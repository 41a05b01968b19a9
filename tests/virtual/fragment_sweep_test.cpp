// The bytes from the iPod in reads of every size. Nothing is lost, so that every session succeeds.
#include <algorithm>

#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using std::chrono::milliseconds;
using virtual_platform::Delivery;
using virtual_platform::Direction;

constexpr int kOrders = 13;  // of the threads, where there is no place to go through

Case deliveredCase(const std::string& how, std::uint64_t seed, const Delivery& delivery) {
  return {how, seed, [=](VirtualSession& session) { session.cable.deliver(delivery); },
          [](VirtualSession&) { return true; }, Outcome::kFullSession};
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

class FragmentSweep : public Sweep {};

TEST_F(FragmentSweep, SplitsAtEveryByte) {
  const std::size_t bytes = bytesOfASession(Direction::kFromIpod);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 1; at < bytes; ++at) {
    for (const int pause : {0, 1, 700}) {  // ms; a request waits for a second
      Delivery delivery;
      delivery.pauseAt = at;
      delivery.pause = milliseconds(pause);
      tryPoint(deliveredCase("split:" + std::to_string(at) + ":" + std::to_string(pause) + "-ms",
                             at + 1, delivery));
    }
  }
}

TEST_F(FragmentSweep, ReadsFewBytesAtATime) {
  for (std::size_t longest = 1; longest <= 20; ++longest) {
    for (std::uint64_t seed = 1; seed <= kOrders; ++seed) {
      Delivery delivery;
      delivery.longestRead = longest;
      tryPoint(deliveredCase("reads-of:" + std::to_string(longest), seed, delivery));
    }
  }
}

TEST_F(FragmentSweep, ReadsEverythingThatIsThereAtOnce) {
  for (int gathering = 1; gathering <= 900; gathering += 31) {  // ms
    for (std::uint64_t seed = 1; seed <= kOrders; ++seed) {
      Delivery delivery;
      delivery.gathering = milliseconds(gathering);
      tryPoint(deliveredCase("gathered:" + std::to_string(gathering) + "-ms", seed, delivery));
    }
  }
}

}  // namespace
}  // namespace virtual_session
