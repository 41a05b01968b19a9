// The library as it is before the first connection of its process. No test connects in this
// process: what needs a connection runs in a separate child process.

#include <desk.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <thread>

#include "api/api_test.h"

using namespace ipodctl;

using testing::IsEmpty;

namespace {

// ---------------------------------------------------------------- semaphores

/// How CreateSemaphoreW behaves for the library in this program.
enum class SemaphoreMaking { kAsUsual, kRefused, kInPairs };

std::mutex makingMutex;
std::condition_variable makerCame;
SemaphoreMaking making = SemaphoreMaking::kAsUsual;
int makers = 0;

// It has no constructor, because the library creates its first semaphores before main.
HANDLE pair[2] = {};

/// The first of two threads continues when the second has arrived, or after 200 ms without one.
void meetTheOtherMaker(std::unique_lock<std::mutex>& lock) {
  constexpr std::chrono::milliseconds kForTheOther{200};
  ++makers;
  makerCame.notify_all();
  makerCame.wait_for(lock, kForTheOther, [] { return makers >= 2; });
}

}  // namespace

extern "C" HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES attributes, LONG initialCount,
                                          LONG maximumCount, LPCWSTR name) {
  using Create = HANDLE(LPSECURITY_ATTRIBUTES, LONG, LONG, LPCWSTR);
  static const auto platformCreate =
      reinterpret_cast<Create*>(dlsym(RTLD_NEXT, "CreateSemaphoreW"));
  std::unique_lock<std::mutex> lock(makingMutex);
  if (making == SemaphoreMaking::kRefused) return nullptr;
  const int maker = makers;
  if (making == SemaphoreMaking::kInPairs) meetTheOtherMaker(lock);
  const HANDLE semaphore = platformCreate(attributes, initialCount, maximumCount, name);
  if (making == SemaphoreMaking::kInPairs && maker < 2) pair[maker] = semaphore;
  return semaphore;
}

namespace {

void makeSemaphores(SemaphoreMaking how) {
  const std::lock_guard<std::mutex> lock(makingMutex);
  making = how;
}

bool isOpen(HANDLE semaphore) { return WaitForSingleObject(semaphore, 0) != WAIT_FAILED; }

/// Runs the checks in a process that has not used the library yet, and ends it with their result.
[[noreturn]] void asChild(void (*checks)()) {
  checks();
  std::exit(testing::Test::HasFailure() ? 1 : 0);
}

void expectOfAFreshProcess(void (*checks)()) {
  EXPECT_EXIT(asChild(checks), testing::ExitedWithCode(0), "");
}

/// An iPod for a child process.
struct ChildsIpod {
  EventLog log;
  QuickSleep quickSleep{log};
  DeskRecorder desk{log};
  ScriptedIpod ipod{log};
};

class FirstUseTest : public testing::Test {
 protected:
  // Each child is a fresh process: a fork of a process with threads would be unreliable.
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

using FirstUseDeathTest = FirstUseTest;

// ---------------------------------------------------------------- before the first connection

TEST_F(FirstUseTest, TheStateIsZero) {
  const char kZeroLevel[] =
      "type=0 count=0 index=0 start=0 end=0 tab=0 tabs=0 shown=0 split=0 playAll=0";
  for (const BrowseTree* tree : {&browseTree, &upDownTree}) {
    EXPECT_EQ(tree->level, 0);
    for (int level = 0; level < 8; ++level)
      EXPECT_EQ(levelText(*tree, level), kZeroLevel);
  }
  EXPECT_EQ(libraryLock.handle(), nullptr);
  EXPECT_EQ(ipodConnected, 0);
  EXPECT_EQ(ipodHasPlayPause, 0);
  EXPECT_EQ(ipodPlayDelayFlag, 0);
  EXPECT_EQ(ipodSampleRate, 0u);
}

TEST_F(FirstUseTest, TheNamesAreThoseOfTheDeviceAndTheLogo) {
  EXPECT_STREQ(usbDeviceName, "IPD1:");
  EXPECT_STREQ(logoFileName, "logo_zel.bmp");
}

/// The exports that write a number.
constexpr int (*kNumberReaders[])(int*) = {
    IpodSongGetNumElem,       IpodGetTrackIndex,           IpodGetShuffleMode,   IpodGetRepeatMode,
    IpodGetCurrentPlayStatus, IpodGetCurrentTrackPosition, IpodGetMediaFileCount};

/// The exports that take the lock, all with outputs.
class WithoutALockTest : public FirstUseTest {
 protected:
  void SetUp() override {
    FirstUseTest::SetUp();
    testing::internal::CaptureStdout();
  }

  // The library has printed, sent and posted nothing and has not called the audio library.
  void TearDown() override {
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    ipod.settle();
    EXPECT_THAT(log.events(), IsEmpty());
    EXPECT_EQ(value, -77);
    EXPECT_EQ(buffer, untouched(8));
    EXPECT_EQ(libraryLock.handle(), nullptr);
  }

  EventLog log;
  DeskRecorder desk{log};
  ScriptedIpod ipod{log};
  int value = -77;
  Units buffer = untouched(8);
};

TEST_F(WithoutALockTest, ConnectionExportsReturnZero) {
  EXPECT_EQ(IpodDisconnect(), 0);
  EXPECT_EQ(IpodValidateUpDownTree(), 0);
  EXPECT_EQ(IpodIsConnect(), 0);
}

TEST_F(WithoutALockTest, CommandsReturnZero) {
  for (int code = 0; code <= 15; ++code)
    EXPECT_EQ(IpodCommand(code), 0);
  for (const int index : {-1, 0, 5})
    EXPECT_EQ(IpodSongPlay(index), 0);
}

TEST_F(WithoutALockTest, ReadingExportsReturnZeroAndWriteNothing) {
  for (const auto read : kNumberReaders)
    EXPECT_EQ(read(&value), 0);
}

TEST_F(WithoutALockTest, ModesAreNotSet) {
  for (int mode = 0; mode <= 4; ++mode) {
    EXPECT_EQ(IpodSetShuffleMode(mode), 0);
    EXPECT_EQ(IpodSetRepeatMode(mode), 0);
  }
}

TEST_F(WithoutALockTest, BrowsingReturnsNullOrZero) {
  for (const int descend : {0, 1})
    EXPECT_EQ(IpodGetFirstItem(descend, IPOD_ARTISTS, 0), nullptr);
  EXPECT_EQ(IpodGetNextItem(), nullptr);
  EXPECT_EQ(IpodGetPrevItem(), nullptr);
  EXPECT_EQ(IpodGetParentItem(), nullptr);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_EQ(IpodIsTrack(), 0);
  EXPECT_EQ(IpodGetType(), 0);
  EXPECT_EQ(browseTree.level, 0);
  EXPECT_EQ(browseTree.levels[0].index, 0);
}

TEST_F(WithoutALockTest, TextsAreNotWritten) {
  EXPECT_EQ(IpodGetItemName(0, buffer.data(), buffer.data(), 8), 0);
  EXPECT_EQ(IpodGetParentUpDownName(0, buffer.data(), buffer.data(), 8), 0);
  EXPECT_EQ(IpodGetTrackInfo(&value, buffer.data(), buffer.data(), buffer.data(), buffer.data(),
                             buffer.data(), 8),
            0);
  EXPECT_EQ(IpodGetName(buffer.data(), 8), 0);
  EXPECT_EQ(IpodGetSerialNumber(buffer.data(), 8), 0);
}

TEST_F(WithoutALockTest, NullPointersAreHarmless) {
  for (const auto read : kNumberReaders)
    EXPECT_EQ(read(nullptr), 0);
  EXPECT_EQ(IpodGetTrackInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 8), 0);
}

TEST_F(WithoutALockTest, LockFreeQueriesAnswerFromTheState) {
  EXPECT_EQ(IpodIsPlayAll(), 0);
  EXPECT_EQ(IpodIsTabActive(), 0);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 0);
  EXPECT_EQ(IpodDisableTabVisualizationActive(), 0);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 0);
}

TEST_F(FirstUseTest, EnablingTheTabVisualizationPrintsLevelZero) {
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodEnableTabVisualizationActive(), 0); }),
            "\nEnter IpodEnableTabVisualizationActive******\n"
            "\n ****IpodEnableTab[0] = 0******\n");
}

TEST_F(FirstUseTest, AskingForTheAudioReachesTheAudioLibrary) {
  EventLog log;
  const DeskRecorder desk(log);
  isochplaySetResult(kIpodAudioPresent, 5);
  EXPECT_EQ(isIpodAudioPresent(4, 3, 2, 1), 5);
  EXPECT_THAT(log.events(), testing::ElementsAre("IpodAudioPresent(4, 3, 2, 1)"));
}

// ---------------------------------------------------------------- the first connection

/// The iPod announces no rate.
void connectToAnIpodThatAnnouncesNoRate() {
  ChildsIpod child;
  child.ipod.answer(kIdentifyDeviceLingoes, {"00 02 00 13", "0A 02"});
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_TRUE(child.log.waitFor("StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)"));
  EXPECT_EQ(ipodSampleRate, 44100u);
  IpodDisconnect();
}

TEST_F(FirstUseDeathTest, StartsTheStreamAt44100HzUntilTheIpodAnnouncesARate) {
  expectOfAFreshProcess(connectToAnIpodThatAnnouncesNoRate);
}

void connectWithoutSemaphores() {
  makeSemaphores(SemaphoreMaking::kRefused);
  const std::string console = printed([] { EXPECT_EQ(IpodConnect(), 0); });
  EXPECT_EQ(console, "Tavrel version is 01.29\nIpodConnect start\n");
  EXPECT_EQ(libraryLock.handle(), nullptr);
  EXPECT_EQ(IpodIsConnect(), 0);
  EXPECT_EQ(IpodDisconnect(), 0);
  makeSemaphores(SemaphoreMaking::kAsUsual);
  ChildsIpod child;
  EXPECT_EQ(IpodConnect(), 1);
  IpodDisconnect();
}

TEST_F(FirstUseDeathTest, ConnectingFailsWithoutASemaphoreAndSucceedsLater) {
  expectOfAFreshProcess(connectWithoutSemaphores);
}

void connectOnTwoThreads() {
  ChildsIpod child;
  makeSemaphores(SemaphoreMaking::kInPairs);
  int results[2] = {-1, -1};
  std::thread first([&] { results[0] = IpodConnect(); });
  std::thread second([&] { results[1] = IpodConnect(); });
  first.join();
  second.join();
  makeSemaphores(SemaphoreMaking::kAsUsual);
  EXPECT_EQ(results[0] + results[1], 1);
  EXPECT_EQ(IpodIsConnect(), 1);
  EXPECT_TRUE(libraryLockIsFree());
  IpodDisconnect();
}

TEST_F(FirstUseDeathTest, TwoThreadsAtOnceMakeOneConnection) {
  expectOfAFreshProcess(connectOnTwoThreads);
}

void raceForTheLock() {
  ChildsIpod child;
  makeSemaphores(SemaphoreMaking::kInPairs);
  std::thread first([] { libraryLock.ensure(); });
  std::thread second([] { libraryLock.ensure(); });
  first.join();
  second.join();
  EXPECT_NE(libraryLock.handle(), nullptr);
  EXPECT_EQ(std::count_if(std::begin(pair), std::end(pair), isOpen), 1);
  EXPECT_TRUE(isOpen(libraryLock.handle()));
}

TEST_F(FirstUseDeathTest, TwoThreadsAtOnceCreateOneLock) { expectOfAFreshProcess(raceForTheLock); }

void connectTwice() {
  ChildsIpod child;
  EXPECT_EQ(IpodConnect(), 1);
  const HANDLE lock = libraryLock.handle();
  EXPECT_NE(lock, nullptr);
  IpodDisconnect();
  EXPECT_EQ(libraryLock.handle(), lock);
  EXPECT_EQ(IpodConnect(), 1);
  EXPECT_EQ(libraryLock.handle(), lock);
  IpodDisconnect();
}

TEST_F(FirstUseDeathTest, TheLockIsPermanent) { expectOfAFreshProcess(connectTwice); }

}  // namespace
