// Each byte of both directions is spoiled, one at a time.
#include <tuple>

#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session::byte_sweep {
namespace {

using virtual_platform::ByteFault;
using virtual_platform::Direction;
using Kind = ByteFault::Kind;

constexpr BYTE kInsertedByte = 0x55;  // where a frame may begin

constexpr const char* kKindNames[] = {"flipped", "lost", "doubled", "inserted"};

// What is done to a byte.
constexpr ByteFault kFaults[] = {{Kind::kLost, 0, 0},         {Kind::kDoubled, 0, 0},
                                 {Kind::kInserted, 0, 0},     {Kind::kInserted, 0, kInsertedByte},
                                 {Kind::kFlipped, 0, 1 << 0}, {Kind::kFlipped, 0, 1 << 1},
                                 {Kind::kFlipped, 0, 1 << 2}, {Kind::kFlipped, 0, 1 << 3},
                                 {Kind::kFlipped, 0, 1 << 4}, {Kind::kFlipped, 0, 1 << 5},
                                 {Kind::kFlipped, 0, 1 << 6}, {Kind::kFlipped, 0, 1 << 7}};

std::string nameOfFault(const ByteFault& fault) {
  return std::string(kKindNames[static_cast<int>(fault.kind)]) + "-" + std::to_string(fault.value);
}

Case spoiledCase(const Script& script, Direction direction, const ByteFault& fault) {
  return {script, nameOf(direction) + ":" + std::to_string(fault.at) + ":" + nameOfFault(fault),
          fault.at + 1, [=](VirtualSession& session) { session.cable.spoil(direction, fault); },
          [=](VirtualSession& session) { return session.cable.hasSpoiled(direction); }};
}

class ByteSweep
    : public Sweep,
      public testing::WithParamInterface<std::tuple<const char*, Direction, ByteFault>> {};

std::string nameOfTest(const testing::TestParamInfo<ByteSweep::ParamType>& info) {
  const auto& [script, direction, fault] = info.param;
  return identifierOf({script, nameOf(direction), nameOfFault(fault)});
}

INSTANTIATE_TEST_SUITE_P(All, ByteSweep,
                         testing::Combine(testing::ValuesIn(kScripts),
                                          testing::ValuesIn(kDirections),
                                          testing::ValuesIn(kFaults)),
                         nameOfTest);

TEST_P(ByteSweep, SpoilsEveryByte) {
  const Script& script = scriptCalled(std::get<0>(GetParam()));
  const Direction direction = std::get<1>(GetParam());
  ByteFault fault = std::get<2>(GetParam());
  const std::size_t bytes = bytesOfASession(script, direction);
  ASSERT_GT(bytes, 100u);
  for (fault.at = 0; fault.at < bytes; ++fault.at)
    tryPoint(spoiledCase(script, direction, fault));
  if (isReplay()) return;
  EXPECT_GE(strikes, cases * 9 / 10);
}

}  // namespace
}  // namespace virtual_session::byte_sweep
