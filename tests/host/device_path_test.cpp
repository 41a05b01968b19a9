#include <desk.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "support/pty_pair.h"

namespace {

/// Returns what IPD1: is mapped to by this IPODCTL_DEVICES; "none" when that has no path.
std::string pathIn(const std::string& entries) {
  const host_test::DeviceMapping devices(entries);
  char path[64] = "none";
  const unsigned size = deskDevicePath("IPD1:", path, sizeof path);
  EXPECT_EQ(size, std::string(path) == "none" ? 0 : std::string(path).size());
  return path;
}

TEST(DevicePath, IsThatOfTheTerminal) {
  EXPECT_EQ(pathIn("COM1:=/dev/ttyS0, ipd1: = /tmp/my/ipod"), "/tmp/my/ipod");
  EXPECT_EQ(pathIn("IPD1:=serial:/dev/ttyUSB0@57600"), "/dev/ttyUSB0");
}

TEST(DevicePath, IsNoneOfATcpPortOrAnIncompleteEntry) {
  EXPECT_EQ(pathIn("IPD1:=tcp:127.0.0.1:5000"), "none");
  EXPECT_EQ(pathIn("IPD1:=serial:/dev/ttyUSB0"), "none");
  EXPECT_EQ(pathIn("IPD1:="), "none");
  EXPECT_EQ(pathIn(""), "none");
}

TEST(DevicePath, IsTheDefaultLinkWithoutAMapping) {
  const host_test::DeviceMapping restoredAfterwards("");
  unsetenv("IPODCTL_DEVICES");
  char path[64] = "none";
  EXPECT_EQ(deskDevicePath("IPD1:", path, sizeof path), 9u);
  EXPECT_STREQ(path, "/tmp/ipod");
  EXPECT_EQ(deskDevicePath("COM1:", path, sizeof path), 0u);
}

TEST(DevicePath, IsNotWrittenWithoutRoomForItsZero) {
  const host_test::DeviceMapping devices("IPD1:=/a/b");
  char path[8] = "?";
  EXPECT_EQ(deskDevicePath("IPD1:", path, 4), 0u);
  EXPECT_STREQ(path, "?");
  EXPECT_EQ(deskDevicePath("IPD1:", path, 5), 4u);
  EXPECT_STREQ(path, "/a/b");
}

}  // namespace
