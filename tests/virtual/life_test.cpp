// Days and months of a head unit. VIRTUAL_DAYS=<n> sets the simulated days, VIRTUAL_MINUTES=<n> the
// minutes on the Linux host. A case is a drive, "drive:<seed>".

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "support/host_folder.h"
#include "support/last_words.h"
#include "support/replay.h"
#include "virtual/drive.h"
#include "virtual/silent_output.h"
#include "virtual/virtual_session.h"

namespace virtual_life {
namespace {

using std::chrono::hours;
using std::chrono::steady_clock;
using virtual_session::isReplay;
using virtual_session::isWanted;
using virtual_session::OpenThings;
using virtual_session::openThings;
using virtual_session::replayCommand;
using virtual_session::replayedCase;
using virtual_session::showReplay;

constexpr long kUsualDays = 1;
constexpr unsigned kDriveSeconds = 120;

long wanted(const char* variable, long usual) {
  const char* const text = std::getenv(variable);
  return text != nullptr ? std::atol(text) : usual;
}

std::string runInSilence(Drive& drive) {
  const virtual_session::SilentOutput silence;
  return drive.run();
}

/// When a life is over.
class LifeSpan {
 public:
  bool isOver(Time lived) const {
    if (minutes == 0) return lived >= hours(24) * days;
    return steady_clock::now() - start >= std::chrono::minutes(minutes);
  }

 private:
  const long minutes = wanted("VIRTUAL_MINUTES", 0);
  const long days = wanted("VIRTUAL_DAYS", kUsualDays);
  const steady_clock::time_point start = steady_clock::now();
};

class Life : public testing::Test {
 protected:
  // The first drive creates all permanent objects.
  Life() {
    Drive first(0);
    runInSilence(first);
  }
  void TearDown() override {
    RecordProperty("virtual_days", static_cast<int>(lived / hours(24)));
    RecordProperty("drives", drives);
    RecordProperty("calls", std::to_string(calls));
    RecordProperty("pulls", pulls);
    RecordProperty("longest_ms", static_cast<int>(longest / std::chrono::milliseconds(1)));
  }

  /// Runs one drive. Returns "", or what went wrong.
  std::string take(std::uint64_t seed) {
    Drive drive(seed);
    std::string fault = runInSilence(drive);
    showReplay(drive.trace());
    ++drives;
    lived += drive.lasted();
    calls += drive.calls();
    pulls += drive.wasPulled() ? 1 : 0;
    longest = std::max(longest, drive.longestCall());
    return fault;
  }

  void takeAndCheck(std::uint64_t seed) {
    const std::string name = "drive:" + std::to_string(seed);
    if (!isWanted(name)) return;
    const std::string again = replayCommand(name);
    const LastWords words(again);
    alarm(kDriveSeconds);
    const OpenThings before = openThings();
    const std::string fault = take(seed);
    const OpenThings after = openThings();
    EXPECT_EQ(fault, "") << again;
    EXPECT_TRUE(after == before || !fault.empty())
        << "left " << after << ", before: " << before << ": " << again;
  }

  const session::HostFolder folder;  // without a logo
  Time lived{0};
  Time longest{0};
  int drives = 0;
  long calls = 0;
  int pulls = 0;
};

TEST_F(Life, LeavesNothingOpenHoweverLongItLasts) {
  if (isReplay()) {
    unsigned long long seed = 0;
    if (std::sscanf(replayedCase().c_str(), "drive:%llu", &seed) == 1) takeAndCheck(seed);
    return;
  }
  const LifeSpan span;
  for (std::uint64_t seed = 1; !span.isOver(lived); ++seed)
    takeAndCheck(seed);
  EXPECT_GT(drives, 0);
}

}  // namespace
}  // namespace virtual_life
