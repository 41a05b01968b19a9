// Which exports wait for the call of another thread. Those that ask the iPod must wait, or two
// callers get each other's answers. One that has no lock must not wait: a user interface calls it
// while it draws.
#include <chrono>
#include <future>
#include <iterator>

#include "api/api_test.h"
#include "support/exports.h"

using namespace ipodctl;

namespace exports {

void PrintTo(const Export& each, std::ostream* out) { *out << each.name; }

}  // namespace exports

namespace {

using exports::Export;

std::vector<Export> exportsThat(bool takeTheLock) {
  std::vector<Export> found;
  std::copy_if(exports::allExports().begin(), exports::allExports().end(),
               std::back_inserter(found), [takeTheLock](const Export& each) {
                 return (each.lock == exports::Lock::kTaken) == takeTheLock;
               });
  return found;
}

class LockTest : public ConnectedApiTest, public testing::WithParamInterface<Export> {
 protected:
  /// Returns whether the export waits for the lock while another thread of the host holds it.
  bool waits() {
    constexpr unsigned kVariety = 0;
    std::future<void> call;
    const LibraryLockHold lock;
    const EndlessWaits waitsForTheLock(libraryLock.handle());
    call = std::async(std::launch::async, [] { GetParam().make(kVariety); });
    while (!waitsForTheLock.any() &&
           call.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready) {
    }
    return waitsForTheLock.any();
  }
};

class LockedExport : public LockTest {};
class LockFreeExport : public LockTest {};

INSTANTIATE_TEST_SUITE_P(Each, LockedExport, testing::ValuesIn(exportsThat(true)),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(LockedExport, WaitsWhileAnotherThreadHoldsTheLock) { EXPECT_TRUE(waits()); }

INSTANTIATE_TEST_SUITE_P(Each, LockFreeExport, testing::ValuesIn(exportsThat(false)),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(LockFreeExport, DoesNotWaitForTheLock) { EXPECT_FALSE(waits()); }

}  // namespace
