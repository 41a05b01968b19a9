// Every call of the platform that can fail and every allocation of the library fails, once and from
// then on always.
#include "virtual/failures.h"

#include "session/counted_heap.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using virtual_platform::FailurePoint;
using virtual_platform::Failures;
using virtual_platform::failuresOf;

constexpr std::uint64_t kOrders = 20;  // of the threads, for each call

// In a session that goes well.
std::size_t callsOfASession(const Failures& failures) {
  VirtualSession session(1);
  const std::size_t before = failures.asked();
  session.run([&] { session.play(); });
  return failures.asked() - before;
}

Case failedCase(const std::string& what, Failures& failures, const FailurePoint& point,
                std::uint64_t seed) {
  return {what + ":" + std::to_string(point.allowed) + (point.andAllLater ? ":always" : ":once"),
          seed, [&failures, point](VirtualSession&) { failures.arm(point); },
          [&failures](VirtualSession&) { return failures.struck() > 0; }};
}

class FailureSweep : public Sweep {
 protected:
  void failEach(const std::string& what, Failures& failures) {
    const std::size_t calls = callsOfASession(failures);
    ASSERT_GT(calls, 0u);
    for (std::size_t allowed = 0; allowed < calls; ++allowed) {
      for (const bool andAllLater : {false, true}) {
        for (std::uint64_t seed = 1; seed <= kOrders; ++seed)
          tryPoint(failedCase(what, failures, {allowed, andAllLater}, seed));
      }
    }
    if (isReplay()) return;
    EXPECT_GT(strikes, 0);
  }
};

class PlatformFailureSweep : public FailureSweep,
                             public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(All, PlatformFailureSweep,
                         testing::Values("CreateThread", "CreateFileW", "ReadFile", "WriteFile",
                                         "FlushFileBuffers"));

TEST_P(PlatformFailureSweep, FailsEveryCall) { failEach(GetParam(), failuresOf(GetParam())); }

// The library's own allocations are new (std::nothrow).
class AllocationFailureSweep : public FailureSweep {
 protected:
  AllocationFailureSweep() {
    session::setRefusal([] { return allocations().strikesNext(); });
  }
  ~AllocationFailureSweep() override { session::setRefusal(nullptr); }

  static Failures& allocations() {
    static Failures& all = failuresOf("allocation");
    return all;
  }
};

TEST_F(AllocationFailureSweep, FailsEveryAllocation) { failEach("allocation", allocations()); }

}  // namespace
}  // namespace virtual_session
