// Loads the platform again and again, like a program that loads and unloads the library that uses
// it.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <thread>

#include "support/pty_pair.h"

namespace {

using host_test::DeviceMapping;
using host_test::Patience;
using host_test::PtyPair;

unsigned entriesOf(const char* directory) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(directory), closedir);
  unsigned count = 0;
  while (readdir(open.get()) != nullptr)
    ++count;
  return count;
}

unsigned descriptors() { return entriesOf("/proc/self/fd"); }
unsigned threads() { return entriesOf("/proc/self/task"); }

class LoadedPlatform {
 public:
  LoadedPlatform() : library(dlopen(COREDLL_PATH, RTLD_NOW | RTLD_LOCAL)) {}
  LoadedPlatform(const LoadedPlatform&) = delete;
  LoadedPlatform& operator=(const LoadedPlatform&) = delete;
  ~LoadedPlatform() {
    if (isLoaded()) dlclose(library);
  }

  bool isLoaded() const { return library != nullptr; }

  template <typename Function>
  Function* find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(library, name));
  }

 private:
  void* const library;
};

DWORD WINAPI doNothing(LPVOID) { return 0; }

/// Makes, uses and closes one object of each kind.
void useEverything(const LoadedPlatform& platform) {
  const auto close = platform.find<decltype(CloseHandle)>("CloseHandle");
  const auto wait = platform.find<decltype(WaitForSingleObject)>("WaitForSingleObject");
  const HANDLE semaphore =
      platform.find<decltype(CreateSemaphoreW)>("CreateSemaphoreW")(nullptr, 1, 1, nullptr);
  EXPECT_EQ(wait(semaphore, 0), WAIT_OBJECT_0);
  EXPECT_TRUE(close(semaphore));
  const HANDLE device = platform.find<decltype(CreateFileW)>("CreateFileW")(
      u"IPD1:", GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  EXPECT_NE(device, INVALID_HANDLE_VALUE);
  EXPECT_TRUE(close(device));
  const HANDLE thread = platform.find<decltype(CreateThread)>("CreateThread")(nullptr, 0, doNothing,
                                                                              nullptr, 0, nullptr);
  EXPECT_EQ(wait(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_TRUE(close(thread));
}

class UnloadedPlatform : public testing::Test {
 protected:
  // A sanitizer starts a thread with the program's first thread.
  UnloadedPlatform() {
    std::thread([] {}).join();
  }
};

TEST_F(UnloadedPlatform, LeavesNoThreadAndNoDescriptor) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  { const LoadedPlatform first; }
  const unsigned descriptorsBefore = descriptors();
  const unsigned threadsBefore = threads();
  for (int round = 0; round < 100; ++round) {
    const LoadedPlatform platform;
    ASSERT_TRUE(platform.isLoaded()) << dlerror();
    useEverything(platform);
  }
  for (const Patience patience; threads() > threadsBefore;)
    ASSERT_FALSE(patience.isOver());
  EXPECT_EQ(descriptors(), descriptorsBefore);
}

/// A module may drop the last reference to the platform while one of its threads still runs
/// instructions of the platform.
TEST_F(UnloadedPlatform, StaysLoadedForThreadsThatAreStillInIt) {
  const unsigned threadsBefore = threads();
  for (int round = 0; round < 100; ++round) {
    const LoadedPlatform platform;
    const HANDLE thread = platform.find<decltype(CreateThread)>("CreateThread")(
        nullptr, 0, doNothing, nullptr, 0, nullptr);
    EXPECT_TRUE(platform.find<decltype(CloseHandle)>("CloseHandle")(thread));
  }
  for (const Patience patience; threads() > threadsBefore;)
    ASSERT_FALSE(patience.isOver());
}

}  // namespace
