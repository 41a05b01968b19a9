// The platform's results without memory, descriptors or permission.
#include <desk.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <cerrno>

#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace {

std::atomic<bool> hasRoomForThreads{true};

}  // namespace

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
  if (!hasRoomForThreads) return EAGAIN;
  static const auto create =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return create(thread, attributes, start, argument);
}

namespace {

using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;

DWORD WINAPI doNothing(LPVOID) { return 0; }

TEST(CreateThread, ThatFailsLeavesNothingOpen) {
  const unsigned handlesBefore = deskOpenHandles();
  hasRoomForThreads = false;
  EXPECT_EQ(CreateThread(nullptr, 0, doNothing, nullptr, 0, nullptr), nullptr);
  EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
  hasRoomForThreads = true;
  EXPECT_EQ(deskOpenHandles(), handlesBefore);
  EXPECT_EQ(deskRunningThreads(), 0u);
}

/// Allows only `count` more descriptors during its lifetime.
class FewDescriptors {
 public:
  explicit FewDescriptors(rlim_t count) {
    getrlimit(RLIMIT_NOFILE, &before);
    const int firstFree = dup(STDIN_FILENO);
    close(firstFree);
    const rlimit few = {static_cast<rlim_t>(firstFree) + count, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &few);
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before); }

 private:
  rlimit before = {};
};

TEST(CreateFileW, WithTooFewDescriptorsDoesNotLockTheTerminal) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  for (const rlim_t count : {0u, 1u}) {
    const FewDescriptors few(count);
    SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(openDevice(u"IPD1:"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(GetLastError(), ERROR_TOO_MANY_OPEN_FILES);
    EXPECT_FALSE(wire.isDeviceOpen());
  }
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
}

TEST(CreateFileW, OfATerminalThatTheUserMayNotOpenIsDenied) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  ASSERT_EQ(chmod(wire.path().c_str(), 0), 0);
  const pid_t other = fork();
  ASSERT_GE(other, 0);
  if (other == 0) {
    constexpr uid_t kNobody = 65534;
    if (getuid() == 0 && setuid(kNobody) != 0) _exit(2);
    const bool isOpen = openDevice(u"IPD1:") != INVALID_HANDLE_VALUE;
    _exit(isOpen || GetLastError() != ERROR_ACCESS_DENIED ? 1 : 0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
}

}  // namespace
