// A short session disturbed at every place, each time from the same start. Whatever happens, calls
// end in time with results that they promise, nothing stays open, and the next session succeeds.
//
// A failure names its case; VIRTUAL_CASE=<name> runs that one alone, the same again, and shows what
// the platform was asked. VIRTUAL_SEEDS=<count> tries so many orders of the threads.

#include <gtest/gtest.h>
#include <ipodctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <tuple>

#include "session/host_folder.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using virtual_platform::Direction;
using virtual_platform::Loss;

constexpr const char* kDirectionNames[] = {"from-ipod", "to-ipod"};
constexpr const char* kLossNames[] = {"end-of-file", "read-error", "write-error", "silence",
                                      "gone"};

// The answer to the last command; in some orders of the threads the link closes before it is read.
constexpr int kFarewellBytes = 10;

constexpr unsigned kCaseSeconds = 60;

struct Cut {
  Direction direction;
  std::size_t bytes;
  Loss loss;
};

struct Case {
  std::optional<Cut> cut;
  std::uint64_t seed;

  std::string name() const {
    const std::string seeded = "seed-" + std::to_string(seed);
    if (!cut) return seeded;
    return std::string(kDirectionNames[static_cast<int>(cut->direction)]) + ":" +
           std::to_string(cut->bytes) + ":" + kLossNames[static_cast<int>(cut->loss)] + ":" +
           seeded;
  }
};

const char* wantedCase() { return std::getenv("VIRTUAL_CASE"); }

bool isWanted(const Case& each) { return wantedCase() == nullptr || wantedCase() == each.name(); }

std::string sessionFault(const Case& each, bool& disturbed) {
  VirtualSession session(each.seed);
  if (each.cut) session.cable.unplugAfter(each.cut->direction, each.cut->bytes, each.cut->loss);
  Calls first;
  Calls second;
  std::string fault = session.run([&] {
    first = session.play();
    disturbed = !session.cable.isPlugged();
    session.cable.plug(session.world.now());
    second = session.play();
  });
  if (wantedCase() != nullptr) {
    for (const std::string& call : session.world.trace())
      std::cout << call << '\n';
  }
  if (fault.empty()) fault = findFault(first);
  if (fault.empty()) fault = findFault(second);
  if (fault.empty() && resultsOf(second) != resultsOfASession()) fault = "no session afterwards";
  if (fault.empty() && !disturbed && resultsOf(first) != resultsOfASession()) fault = "no session";
  return fault;
}

/// Empty when nothing is wrong. Says whether the iPod was pulled.
std::string faultOf(const Case& each, bool& disturbed) {
  const OpenThings before = openThings();
  const std::string fault = sessionFault(each, disturbed);
  if (!fault.empty()) return fault;
  const OpenThings after = openThings();
  if (after == before) return "";
  std::ostringstream difference;
  difference << "left " << after << ", before: " << before;
  return difference.str();
}

class Sweep : public testing::Test {
 protected:
  Sweep() { warmUp(); }
  void TearDown() override { std::cout << cases << " cases, " << pulls << " pulled\n"; }

  void tryCase(const Case& each) {
    if (!isWanted(each)) return;
    alarm(kCaseSeconds);  // for each case anew: a sweep may take long
    bool disturbed = false;
    ASSERT_EQ(faultOf(each, disturbed), "") << "VIRTUAL_CASE=" << each.name();
    ++cases;
    if (disturbed) ++pulls;
  }

  const session::HostFolder folder;  // without a logo
  int cases = 0;
  int pulls = 0;
};

/// How many bytes of a direction an undisturbed session has.
std::size_t bytesOfASession(Direction direction) {
  VirtualSession session(1);
  session.run([&] { session.play(); });
  return session.cable.passed(direction);
}

class UnplugSweep : public Sweep,
                    public testing::WithParamInterface<std::tuple<Direction, Loss>> {};

INSTANTIATE_TEST_SUITE_P(All, UnplugSweep,
                         testing::Combine(testing::Values(Direction::kFromIpod, Direction::kToIpod),
                                          testing::Values(Loss::kEndOfFile, Loss::kReadError,
                                                          Loss::kWriteError, Loss::kSilence,
                                                          Loss::kGone)));

TEST_P(UnplugSweep, AtEveryByte) {
  const auto [direction, loss] = GetParam();
  const std::size_t bytes = bytesOfASession(direction);
  ASSERT_GT(bytes, 100u);
  for (std::size_t at = 0; at < bytes && !HasFatalFailure(); ++at)
    tryCase({Cut{direction, at, loss}, at + 1});
  if (wantedCase() != nullptr || HasFatalFailure()) return;
  EXPECT_GE(pulls + kFarewellBytes, static_cast<int>(bytes));
}

TEST_F(Sweep, OfOrdersOfTheThreads) {
  const char* const wanted = std::getenv("VIRTUAL_SEEDS");
  const std::uint64_t seeds = wanted != nullptr ? std::strtoull(wanted, nullptr, 10) : 500;
  for (std::uint64_t seed = 1; seed <= seeds && !HasFatalFailure(); ++seed)
    tryCase({std::nullopt, seed});
}

}  // namespace
}  // namespace virtual_session
