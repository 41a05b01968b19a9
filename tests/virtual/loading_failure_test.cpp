// The library creates its link and semaphores when it is loaded. Every semaphore and every
// allocation fails, each in a separate process of this program. VIRTUAL_LOADING names the failure:
// "allocation:3:once" or "CreateSemaphoreW:3:always".
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "support/counted_heap.h"
#include "support/host_folder.h"
#include "support/program.h"
#include "virtual/failures.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using virtual_platform::FailurePoint;
using virtual_platform::failuresOf;

constexpr const char* kVariable = "VIRTUAL_LOADING";
constexpr const char* kSemaphore = "CreateSemaphoreW";
constexpr const char* kAllocation = "allocation";
// Only the first allocation is for the library's whole life.
constexpr const char* kTheLink = "allocation:0:";
constexpr std::uint64_t kSeed = 1;

// Without the library's lock the calls do nothing and write nothing.
std::vector<std::string> resultsWithoutTheLock() {
  return {"IpodConnect 0",          "IpodGetFirstItem 0 -",         "IpodGetNextItem 0 -",
          "IpodGetItemName 0 - -",  "IpodGetFirstItem 0 -",         "IpodSongPlay 0",
          "IpodSongGetNumElem 0 -", "IpodGetCurrentPlayStatus 0 -", "IpodDisconnect 0",
          "IpodIsConnect 0"};
}

// Without the link no iPod is ever found.
std::vector<std::string> resultsWithoutTheLink() {
  return {"IpodConnect 0",          "IpodGetFirstItem 1 -1",        "IpodGetNextItem 0 -",
          "IpodGetItemName 0 - -",  "IpodGetFirstItem 1 -1",        "IpodSongPlay 0",
          "IpodSongGetNumElem 0 0", "IpodGetCurrentPlayStatus 0 0", "IpodDisconnect 0",
          "IpodIsConnect 0"};
}

std::size_t madeAtLoading = 0;  // allocations

// Runs before the library's own objects are constructed.
__attribute__((constructor(101))) void failAtLoading() {
  session::setRefusal([] { return failuresOf(kAllocation).strikesNext(); });
  const char* const wanted = std::getenv(kVariable);
  if (wanted == nullptr) return;
  const std::string text = wanted;
  const std::size_t name = text.find(':');
  failuresOf(text.substr(0, name))
      .arm({std::stoul(text.substr(name + 1)), text.find(":always") != std::string::npos});
}

bool isArmed(const char* what) {
  const char* const wanted = std::getenv(kVariable);
  return wanted != nullptr && std::string(wanted).find(what) == 0;
}

// Runs in the separate process. The library is destroyed at its end; a sanitizer reports a use of
// objects that are destroyed before.
void expectSessionsAroundTheFailure() {
  Calls first;
  Calls second;
  {
    VirtualSession session(kSeed);
    EXPECT_EQ(session.run([&] {
      first = session.play();
      session.mend();
      second = session.play();
    }),
              "");
  }
  const char* const what = isArmed(kSemaphore) ? kSemaphore : kAllocation;
  EXPECT_GT(failuresOf(what).struck(), 0u);
  const bool hasLock = resultsOf(first) != resultsWithoutTheLock();
  EXPECT_TRUE(!hasLock || findFault(first, exportPromises()).empty())
      << findFault(first, exportPromises());
  const bool hasLink = !isArmed(kTheLink);
  EXPECT_EQ(resultsOf(second), hasLink ? shortScript().results : resultsWithoutTheLink());
  const OpenThings before = openThings();
  warmUp();
  EXPECT_EQ(openThings(), before);
}

void meet(const char* what, const FailurePoint& point) {
  const std::string which = std::string(what) + ":" + std::to_string(point.allowed) +
                            (point.andAllLater ? ":always" : ":once");
  setenv(kVariable, which.c_str(), 1);
  simulator::Program program(TEST_PROGRAM, {});
  unsetenv(kVariable);
  EXPECT_EQ(program.waitForEnd(), 0) << kVariable << '=' << which << '\n' << program.restOfOutput();
}

class LoadingFailure : public testing::Test {
 protected:
  void meetAll(const char* what, std::size_t made) {
    ASSERT_GT(made, 0u);
    for (std::size_t allowed = 0; allowed < made; ++allowed) {
      meet(what, {allowed, false});
      meet(what, {allowed, true});
    }
    RecordProperty("cases", static_cast<int>(2 * made));
    RecordProperty("struck", static_cast<int>(2 * made));
  }

  const session::HostFolder folder;
};

TEST_F(LoadingFailure, EndsWithItsCauseForAnySemaphore) {
  if (std::getenv(kVariable) != nullptr) {
    if (isArmed(kSemaphore)) expectSessionsAroundTheFailure();
    return;
  }
  warmUp();  // the first call creates the lock
  meetAll(kSemaphore, failuresOf(kSemaphore).asked());
}

TEST_F(LoadingFailure, LeavesAtWorstNoLinkForAnyAllocation) {
  if (std::getenv(kVariable) != nullptr) {
    if (isArmed(kAllocation)) expectSessionsAroundTheFailure();
    return;
  }
  meetAll(kAllocation, madeAtLoading);
}

// Runs after the library's own objects are constructed.
__attribute__((constructor(65535))) void countWhatLoadingMade() {
  madeAtLoading = failuresOf(kAllocation).asked();
}

}  // namespace
}  // namespace virtual_session
