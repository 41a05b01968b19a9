// Measures the stack of the reader thread on the device's processor. The stack is filled with a
// pattern before the thread starts, and bytes without the pattern afterwards were used. Device
// calls and the console are those of the Linux host, and need more than those of the device.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ipodctl.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <iterator>

#include "support/session_ipod.h"

namespace {

constexpr size_t kPaintedBytes = 48 * 1024;
constexpr unsigned char kPaint = 0xA5;

/// Bytes. The smallest stack of a thread on the device has 64 KB.
constexpr size_t kLimit = 4 * 1024;

std::atomic<size_t> mostUsed{0};

struct Start {
  LPTHREAD_START_ROUTINE routine;
  LPVOID parameter;
};

/// Fills the stack. This function and the one that measures have their array at the same place,
/// except for a few words: below the frame of their caller.
__attribute__((noinline)) void paintStack() {
  volatile unsigned char area[kPaintedBytes];
  std::fill(std::begin(area), std::end(area), kPaint);
}

__attribute__((noinline)) size_t usedStack() {
  volatile unsigned char area[kPaintedBytes];
  const auto isPaint = [](unsigned char byte) { return byte == kPaint; };
  const volatile unsigned char* const lowest =
      std::find_if(std::begin(area), std::end(area), isPaint);
  const volatile unsigned char* const end = std::end(area);
  return static_cast<size_t>(end - std::find_if_not(lowest, end, isPaint));
}

DWORD WINAPI runMeasured(LPVOID parameter) {
  const Start start = *static_cast<Start*>(parameter);
  delete static_cast<Start*>(parameter);
  paintStack();
  const DWORD result = start.routine(start.parameter);
  mostUsed = std::max<size_t>(mostUsed, usedStack());
  return result;
}

}  // namespace

/// Replaces the platform's function.
extern "C" HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, DWORD stackSize,
                                      LPTHREAD_START_ROUTINE routine, LPVOID parameter, DWORD flags,
                                      LPDWORD threadId) {
  const auto platform = reinterpret_cast<decltype(&CreateThread)>(dlsym(RTLD_NEXT, "CreateThread"));
  return platform(attributes, stackSize, runMeasured, new Start{routine, parameter}, flags,
                  threadId);
}

namespace {

TEST(ReaderStack, StaysFarBelowAThreadsStack) {
  session::SessionIpod ipod;
  ipod.folder.putLogo();
  ASSERT_EQ(IpodConnect(), 1);
  ASSERT_TRUE(ipod.settle());
  ASSERT_NE(IpodGetFirstItem(0, IPOD_ARTISTS, 0), nullptr);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  ASSERT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  IpodSongPlay(0);
  // The track has another sample rate, which the reader follows.
  ASSERT_TRUE(ipod.log.waitFor("SelectFrequency(48000 Hz)"));
  ASSERT_EQ(IpodDisconnect(), 0);
  ASSERT_GT(mostUsed, 0u);
  std::printf("reader's stack: %zu bytes of at most %zu\n", mostUsed.load(), kLimit);
  EXPECT_LT(mostUsed, kLimit);
}

}  // namespace
