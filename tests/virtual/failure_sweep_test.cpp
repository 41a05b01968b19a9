// Every call of the platform that can fail and every allocation of the library fails: once, and
// from then on.
#include "virtual/failures.h"

#include <tuple>

#include "support/counted_heap.h"
#include "support/replay.h"
#include "virtual/sweep.h"

namespace virtual_session::failure_sweep {
namespace {

using virtual_platform::FailurePoint;
using virtual_platform::Failures;
using virtual_platform::failuresOf;

constexpr std::uint64_t kOrders = 20;  // of the threads, for each call
constexpr std::size_t kMany = 5;       // calls of a session, of which a slice has some

// In an undisturbed session.
std::size_t callsOfASession(const Script& script, const Failures& failures) {
  VirtualSession session(1, script);
  const std::size_t before = failures.asked();
  session.run([&] { session.play(); });
  return failures.asked() - before;
}

Case failedCase(const Script& script, const std::string& what, const FailurePoint& point,
                std::uint64_t seed) {
  Failures& failures = failuresOf(what);
  return {script,
          what + ":" + std::to_string(point.allowed) + (point.andAllLater ? ":always" : ":once"),
          seed, [&failures, point](VirtualSession&) { failures.arm(point); },
          [&failures](VirtualSession&) { return failures.struck() > 0; }};
}

// The function, or "allocation", and whether it continues to fail.
using Failing = std::tuple<const char*, const char*, bool>;

std::string nameOfTest(const testing::TestParamInfo<Failing>& info) {
  const auto& [script, what, andAllLater] = info.param;
  return identifierOf({script, what, andAllLater ? "always" : "once"});
}

class FailureSweep : public Sweep, public testing::WithParamInterface<Failing> {
 protected:
  void failEach() {
    const Script& script = scriptCalled(std::get<0>(GetParam()));
    const auto [name, what, andAllLater] = GetParam();
    const std::size_t calls = callsOfASession(script, failuresOf(what));
    ASSERT_GT(calls, 0u);
    const auto attempt = calls < kMany ? &FailureSweep::tryCase : &FailureSweep::tryPoint;
    for (std::size_t allowed = 0; allowed < calls; ++allowed) {
      for (std::uint64_t seed = 1; seed <= ordersOf(script, kOrders); ++seed)
        (this->*attempt)(failedCase(script, what, {allowed, andAllLater}, seed));
    }
    if (isReplay()) return;
    EXPECT_GE(strikes, cases * 9 / 10);
  }
};

using PlatformFailureSweep = FailureSweep;

INSTANTIATE_TEST_SUITE_P(All, PlatformFailureSweep,
                         testing::Combine(testing::ValuesIn(kScripts),
                                          testing::Values("CreateThread", "CreateFileW", "ReadFile",
                                                          "WriteFile", "FlushFileBuffers"),
                                          testing::Bool()),
                         nameOfTest);

TEST_P(PlatformFailureSweep, FailsEveryCall) { failEach(); }

// The library's own allocations are new (std::nothrow).
class AllocationFailureSweep : public FailureSweep {
 protected:
  AllocationFailureSweep() {
    session::setRefusal([] { return failuresOf("allocation").strikesNext(); });
  }
  ~AllocationFailureSweep() override { session::setRefusal(nullptr); }
};

INSTANTIATE_TEST_SUITE_P(All, AllocationFailureSweep,
                         testing::Combine(testing::ValuesIn(kScripts),
                                          testing::Values("allocation"), testing::Bool()),
                         nameOfTest);

TEST_P(AllocationFailureSweep, FailsEveryAllocation) { failEach(); }

}  // namespace
}  // namespace virtual_session::failure_sweep
