// The library makes its semaphores when it is loaded. Every one of them fails to be made, each time in
// a process of its own: this program, which finds in VIRTUAL_SEMAPHORES which one, as "3:once" or
// "3:always".
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "session/host_folder.h"
#include "simulator/program.h"
#include "virtual/failures.h"
#include "virtual/virtual_session.h"

namespace virtual_session {
namespace {

using virtual_platform::FailurePoint;
using virtual_platform::Failures;
using virtual_platform::failuresOf;

constexpr const char* kVariable = "VIRTUAL_SEMAPHORES";
constexpr std::uint64_t kSeed = 1;

// Without the library's lock the calls do nothing, and leave alone what they would write.
std::vector<std::string> resultsWithoutTheLock() {
  return {"IpodConnect 0",          "IpodGetFirstItem 0 -",         "IpodGetNextItem 0 -",
          "IpodGetItemName 0 - -",  "IpodGetFirstItem 0 -",         "IpodSongPlay 0",
          "IpodSongGetNumElem 0 -", "IpodGetCurrentPlayStatus 0 -", "IpodDisconnect 0",
          "IpodIsConnect 0"};
}

Failures& semaphores() { return failuresOf("CreateSemaphoreW"); }

// Before the library's own objects are made.
__attribute__((constructor(101))) void failAtLoading() {
  const char* const wanted = std::getenv(kVariable);
  if (wanted == nullptr) return;
  const std::string text = wanted;
  semaphores().arm({std::strtoul(wanted, nullptr, 10), text.find(":always") != std::string::npos});
}

// In the process of its own, at whose end the library goes, too: under a sanitizer without touching
// what is gone before.
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
  EXPECT_GT(semaphores().struck(), 0u);
  EXPECT_TRUE(findFault(first, exportPromises()).empty() ||
              resultsOf(first) == resultsWithoutTheLock())
      << findFault(first, exportPromises());
  EXPECT_EQ(resultsOf(second), shortScript().results);
  const OpenThings before = openThings();
  warmUp();
  EXPECT_EQ(openThings(), before);
}

void meet(const FailurePoint& point) {
  const std::string which =
      std::to_string(point.allowed) + (point.andAllLater ? ":always" : ":once");
  setenv(kVariable, which.c_str(), 1);
  simulator::Program program(TEST_PROGRAM, {});
  unsetenv(kVariable);
  EXPECT_EQ(program.waitForEnd(), 0) << kVariable << '=' << which << '\n' << program.restOfOutput();
}

TEST(SemaphoreFailure, DoesNotOutlastItsCauseForAnySemaphore) {
  const session::HostFolder folder;
  if (std::getenv(kVariable) != nullptr) {
    expectSessionsAroundTheFailure();
    return;
  }
  warmUp();
  const std::size_t made = semaphores().asked();
  ASSERT_GT(made, 5u);
  for (std::size_t allowed = 0; allowed < made; ++allowed) {
    meet({allowed, false});
    meet({allowed, true});
  }
  std::cout << 2 * made << " cases\n";
}

}  // namespace
}  // namespace virtual_session
