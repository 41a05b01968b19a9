// The bytes of either direction spoiled, one at a time.
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using virtual_platform::ByteFault;
using virtual_platform::Direction;
using Kind = ByteFault::Kind;

constexpr BYTE kInsertedByte = 0x55;  // where a frame may begin
constexpr int kBits = 8;

constexpr const char* kKindNames[] = {"flipped", "lost", "doubled", "inserted"};

Case spoiledCase(Direction direction, const ByteFault& fault) {
  const std::string what = kKindNames[static_cast<int>(fault.kind)];
  return {nameOf(direction) + ":" + std::to_string(fault.at) + ":" + what + "-" +
              std::to_string(fault.value),
          fault.at + 1, [=](VirtualSession& session) { session.cable.spoil(direction, fault); },
          [=](VirtualSession& session) { return session.cable.hasSpoiled(direction); }};
}

std::vector<ByteFault> faultsAt(std::size_t at) {
  std::vector<ByteFault> faults{{Kind::kLost, at, 0},
                                {Kind::kDoubled, at, 0},
                                {Kind::kInserted, at, 0},
                                {Kind::kInserted, at, kInsertedByte}};
  for (int bit = 0; bit < kBits; ++bit)
    faults.push_back({Kind::kFlipped, at, static_cast<BYTE>(1 << bit)});
  return faults;
}

class ByteSweep : public Sweep, public testing::WithParamInterface<Direction> {};

INSTANTIATE_TEST_SUITE_P(All, ByteSweep, testing::ValuesIn(kDirections));

TEST_P(ByteSweep, SpoilsEveryByte) {
  const std::size_t bytes = bytesOfASession(GetParam());
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 0; at < bytes; ++at) {
    for (const ByteFault& fault : faultsAt(at))
      tryPoint(spoiledCase(GetParam(), fault));
  }
  if (isReplay()) return;
  EXPECT_GT(strikes, cases * 9 / 10);
}

}  // namespace
}  // namespace virtual_session
