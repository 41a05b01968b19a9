#include "base/semaphore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class SemaphoreTest : public ScriptedPlatformTest {
 protected:
  /// A semaphore that exists, and no calls so far.
  SemaphoreTest() {
    EXPECT_TRUE(semaphore.ensure());
    platform.calls.clear();
  }

  // Clang cannot follow a lock through an assertion.
  IPODCTL_NOT_CHECKED bool take(uint32_t nanoseconds, uint32_t seconds) {
    return semaphore.take(nanoseconds, seconds);
  }
  IPODCTL_NOT_CHECKED bool tryTake() { return semaphore.tryTake(); }
  IPODCTL_NOT_CHECKED int give() { return semaphore.give(); }

  Semaphore semaphore;
};

TEST_F(SemaphoreTest, IsCreatedByTheFirstEnsureOnly) {
  Semaphore fresh;
  EXPECT_FALSE(fresh.exists());
  EXPECT_EQ(fresh.handle(), nullptr);
  EXPECT_THAT(platform.calls, IsEmpty());
  EXPECT_TRUE(fresh.ensure());
  EXPECT_TRUE(fresh.ensure());
  EXPECT_TRUE(fresh.exists());
  EXPECT_EQ(platform.nameOf(fresh.handle()), "semaphore 2");
  EXPECT_THAT(platform.calls, ElementsAre("CreateSemaphoreW(null, 1, 1, null)"));
}

TEST_F(SemaphoreTest, DoesNotExistIfTheSystemHasNoneAndReportsNoError) {
  platform.semaphoresFail = true;
  platform.lastError = ERROR_SUCCESS;
  Semaphore fresh;
  EXPECT_FALSE(fresh.ensure());
  EXPECT_FALSE(fresh.exists());
  platform.semaphoresFail = false;
  EXPECT_TRUE(fresh.ensure());
}

TEST_F(SemaphoreTest, IsClosedByItsDestructor) {
  {
    Semaphore fresh;
    fresh.ensure();
  }
  EXPECT_THAT(platform.callsOf("CloseHandle"), ElementsAre("CloseHandle(semaphore 2)"));
}

TEST_F(SemaphoreTest, IsNotClosedIfItWasNeverCreated) {
  { const Semaphore fresh; }
  EXPECT_THAT(platform.calls, IsEmpty());
}

TEST_F(SemaphoreTest, IsReleasedAndClosedOnce) {
  {
    Semaphore fresh;
    fresh.ensure();
    platform.calls.clear();
    fresh.releaseAndClose();
    EXPECT_FALSE(fresh.exists());
  }
  EXPECT_THAT(platform.calls,
              ElementsAre("ReleaseSemaphore(semaphore 2, 1)", "CloseHandle(semaphore 2)"));
}

TEST_F(SemaphoreTest, IsTakenUntilItIsGiven) {
  EXPECT_TRUE(take(0, 1));
  EXPECT_FALSE(tryTake());
  EXPECT_FALSE(take(500000000, 2));
  EXPECT_EQ(platform.waited, 2500u);
  EXPECT_EQ(give(), 0);
  EXPECT_TRUE(tryTake());
  EXPECT_EQ(give(), 0);
}

TEST_F(SemaphoreTest, SignalsOneWaiter) {
  semaphore.reset();
  EXPECT_FALSE(semaphore.await(0, 1));
  semaphore.signal();
  semaphore.signal();
  EXPECT_TRUE(semaphore.await(0, 0));
  EXPECT_FALSE(semaphore.await(0, 1));
}

TEST_F(SemaphoreTest, DoesNotSignalAfterAReset) {
  semaphore.signal();
  semaphore.reset();
  EXPECT_FALSE(semaphore.await(0, 1));
  EXPECT_EQ(platform.waited, 1000u);
}

TEST_F(SemaphoreTest, IsHeldForTheLifeOfAHold) {
  {
    const SemaphoreHold hold(semaphore);
    EXPECT_THAT(platform.calls, ElementsAre("WaitForSingleObject(semaphore 1, INFINITE)"));
  }
  EXPECT_THAT(platform.calls, ElementsAre("WaitForSingleObject(semaphore 1, INFINITE)",
                                          "ReleaseSemaphore(semaphore 1, 1)"));
}

}  // namespace
}  // namespace ipodctl
