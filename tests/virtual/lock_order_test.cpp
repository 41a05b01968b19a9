#include <gtest/gtest.h>

#include "virtual/story.h"

namespace virtual_session {
namespace {

constexpr char kTake[] = "WaitForSingleObject(the library's lock, 4294967295) = 0";
constexpr char kRelease[] = "ReleaseSemaphore(the library's lock, 1) from 0";

std::string host(int number, const std::string& text) {
  return "17 host " + std::to_string(number) + ": " + text;
}

std::string reader(const std::string& text) { return "17 library 1: " + text; }

TEST(LockOrder, AllowsEverythingToTheHolderOfTheLock) {
  EXPECT_EQ(findDisorder({host(1, "calls IpodSongPlay"), host(1, kTake),
                          host(1, "WriteFile(device 1, 5): error 0, 5 bytes 55 02 00 06 F8"),
                          host(1, "PostMessageW(0xffff, 0x2400, 0, 0)"),
                          host(1, "changes the browse tree"), host(1, kRelease)}),
            "");
}

TEST(LockOrder, FindsWhatIsDoneBeforeTheLockAndAfterIt) {
  const std::string print = host(1, "prints IpodGetName start");
  EXPECT_EQ(findDisorder({host(1, "calls IpodGetName"), print, host(1, kTake), host(1, kRelease)}),
            print + ", without the lock");
  EXPECT_EQ(findDisorder({host(1, "calls IpodGetName"), host(1, kTake), host(1, kRelease), print}),
            print + ", without the lock");
}

TEST(LockOrder, FindsWhatIsDoneUnderTheLockOfAnotherThread) {
  const std::string write = host(2, "WriteFile(device 1, 5): error 0, 5 bytes 55 02 00 06 F8");
  EXPECT_EQ(findDisorder({host(1, kTake), write}), write + ", without the lock");
  EXPECT_EQ(findDisorder({host(2, "calls IpodGetNumberOfPlaylist"), host(1, kTake), write}), "");
}

TEST(LockOrder, FindsALockThatTwoThreadsTakeOrThatIsReleasedTwice) {
  EXPECT_EQ(findDisorder({host(1, kTake), host(2, kTake)}), host(2, kTake) + ", without the lock");
  EXPECT_EQ(findDisorder({host(1, kTake), host(1, kRelease), host(1, kRelease)}),
            host(1, kRelease) + ", without the lock");
}

TEST(LockOrder, KeepsTheReaderFromTheLock) {
  EXPECT_EQ(
      findDisorder({reader("SelectFrequency(48000 Hz)"), reader("sets ipodSampleRate = 48000")}),
      "");
  EXPECT_EQ(findDisorder({reader(kTake)}), reader(kTake) + ", without the lock");
}

TEST(LockOrder, AllowsExportsWithoutTheLockToChangeTheirOwnState) {
  EXPECT_EQ(findDisorder({host(1, "calls IpodSetSameIpod"), host(1, "changes the snapshot")}), "");
  const std::string change = host(1, "changes the browse tree");
  EXPECT_EQ(findDisorder({host(1, "calls IpodSetSameIpod"), change}),
            change + ", without the lock");
}

}  // namespace
}  // namespace virtual_session
