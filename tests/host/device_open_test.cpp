#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <cstdio>
#include <string>

#include "support/device_calls.h"
#include "support/pty_pair.h"

namespace {

using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;
using host_test::readDevice;
using host_test::success;

/// Returns the error of an open that must fail.
DWORD openError(LPCWSTR name) {
  SetLastError(ERROR_SUCCESS);
  const OwnedHandle device(openDevice(name));
  EXPECT_EQ(device.get(), INVALID_HANDLE_VALUE);
  return GetLastError();
}

TEST(CreateFileW, OpensTheTerminalThatTheEnvironmentNames) {
  PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  ASSERT_TRUE(device.isOpen());
  EXPECT_TRUE(wire.isDeviceOpen());
  EXPECT_TRUE(wire.send({0x55}));
  EXPECT_EQ(readDevice(device.get(), 1), success({0x55}));
}

TEST(CreateFileW, FindsEachOfSeveralDevices) {
  PtyPair ipod;
  PtyPair serial;
  const DeviceMapping devices("IPD1:=" + ipod.path() + ",COM1:=" + serial.path());
  const OwnedHandle stream(openDevice(u"IPD1:"));
  EXPECT_TRUE(ipod.isDeviceOpen());
  EXPECT_FALSE(serial.isDeviceOpen());
  const OwnedHandle port(openDevice(u"COM1:"));
  EXPECT_TRUE(serial.isDeviceOpen());
}

TEST(CreateFileW, IgnoresBlanksEmptyEntriesAndCase) {
  const PtyPair wire;
  const DeviceMapping devices(" ,nothing, =x, ipd1: = " + wire.path() + " ,");
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
  EXPECT_TRUE(OwnedHandle(openDevice(u"Ipd1:")).isOpen());
}

TEST(CreateFileW, TakesTheFirstEntryOfAName) {
  const PtyPair first;
  const PtyPair second;
  const DeviceMapping devices("IPD1:=" + first.path() + ",IPD1:=" + second.path());
  const OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_TRUE(first.isDeviceOpen());
  EXPECT_FALSE(second.isDeviceOpen());
}

TEST(CreateFileW, ReadsTheEnvironmentAtEachOpen) {
  const PtyPair wire;
  const DeviceMapping nothing("");
  EXPECT_EQ(openError(u"IPD1:"), ERROR_FILE_NOT_FOUND);
  {
    const DeviceMapping devices("IPD1:", wire);
    EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
  }
  EXPECT_EQ(openError(u"IPD1:"), ERROR_FILE_NOT_FOUND);
}

TEST(CreateFileW, FollowsALinkToTheTerminal) {
  const PtyPair wire;
  const std::string link = testing::TempDir() + "link_to_terminal_" + std::to_string(getpid());
  ASSERT_EQ(symlink(wire.path().c_str(), link.c_str()), 0);
  const DeviceMapping devices("IPD1:=" + link);
  const OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_EQ(std::remove(link.c_str()), 0);
  EXPECT_TRUE(device.isOpen());
}

TEST(CreateFileW, DoesNotFindANameWithoutEntry) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  for (const LPCWSTR name : {u"IPD2:", u"IPD1", u"IPD1:x", u"\u0249PD1:", u""}) {
    EXPECT_EQ(openError(name), ERROR_FILE_NOT_FOUND);
  }
}

TEST(CreateFileW, DoesNotFindAPathThatIsNotATerminal) {
  const std::string file = testing::TempDir() + "no_terminal_" + std::to_string(getpid());
  std::fclose(std::fopen(file.c_str(), "w"));
  for (const std::string& path : {file, testing::TempDir(), std::string("/dev/null"),
                                  std::string("/dev/pts/none"), std::string()}) {
    const DeviceMapping devices("IPD1:=" + path);
    EXPECT_EQ(openError(u"IPD1:"), ERROR_FILE_NOT_FOUND) << path;
  }
  EXPECT_EQ(std::remove(file.c_str()), 0);
}

TEST(CreateFileW, DoesNotFindATerminalWhoseOtherSideHasClosed) {
  PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  // While it is open, the terminal of another program cannot get the same path.
  const OwnedHandle device(openDevice(u"IPD1:"));
  wire.hangUp();
  EXPECT_EQ(openError(u"IPD1:"), ERROR_FILE_NOT_FOUND);
}

TEST(CreateFileW, OpensATerminalOnceAtATime) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:=" + wire.path() + ",COM1:=" + wire.path());
  OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_EQ(openError(u"IPD1:"), ERROR_SHARING_VIOLATION);
  EXPECT_EQ(openError(u"COM1:"), ERROR_SHARING_VIOLATION);
  EXPECT_TRUE(device.close());
  EXPECT_TRUE(OwnedHandle(openDevice(u"COM1:")).isOpen());
}

TEST(CreateFileW, DoesNotOpenWhatAnotherProcessHasOpen) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  const pid_t other = fork();
  ASSERT_GE(other, 0);
  if (other == 0) {
    const bool isOpen = OwnedHandle(openDevice(u"IPD1:")).isOpen();
    _exit(isOpen || GetLastError() != ERROR_SHARING_VIOLATION ? 1 : 0);
  }
  int status = -1;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
}

/// A program that was killed must not prevent the next one from opening the terminal.
TEST(CreateFileW, OpensATerminalWhoseUserDiedWithoutClosing) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const pid_t other = fork();
  ASSERT_GE(other, 0);
  if (other == 0) _exit(openDevice(u"IPD1:") == INVALID_HANDLE_VALUE ? 1 : 0);
  int status = -1;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
}

TEST(CreateFileW, SupportsOnlyUnsharedReadingAndWriting) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  constexpr DWORD kBoth = GENERIC_READ | GENERIC_WRITE;
  constexpr DWORD kCreateNew = 1;
  constexpr DWORD kShareRead = 1;
  constexpr DWORD kOverlapped = 0x40000000;
  static char anything;
  const HANDLE refused[] = {
      CreateFileW(u"IPD1:", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr),
      CreateFileW(u"IPD1:", kBoth, kShareRead, nullptr, OPEN_EXISTING, 0, nullptr),
      CreateFileW(u"IPD1:", kBoth, 0, nullptr, kCreateNew, 0, nullptr),
      CreateFileW(u"IPD1:", kBoth, 0, nullptr, OPEN_EXISTING, kOverlapped, nullptr),
      CreateFileW(u"IPD1:", kBoth, 0, nullptr, OPEN_EXISTING, 0, &anything),
  };
  for (const HANDLE handle : refused)
    EXPECT_EQ(handle, INVALID_HANDLE_VALUE);
  EXPECT_EQ(openError(nullptr), ERROR_INVALID_PARAMETER);
}

TEST(CreateFileW, MakesTheTerminalRaw) {
  PtyPair wire;
  {
    // The settings that a shell leaves.
    termios cooked = wire.settings();
    cooked.c_iflag |= ICRNL | IXON | ISTRIP;
    cooked.c_oflag |= OPOST | ONLCR;
    cooked.c_lflag |= ICANON | ECHO | ISIG | IEXTEN;
    cooked.c_cc[VMIN] = 0;
    wire.changeSettings(cooked);
  }
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  const termios raw = wire.settings();
  EXPECT_EQ(raw.c_iflag & (ICRNL | IXON | ISTRIP), 0u);
  EXPECT_EQ(raw.c_oflag & OPOST, 0u);
  EXPECT_EQ(raw.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), 0u);
  EXPECT_EQ(raw.c_cflag & CSIZE, tcflag_t{CS8});
  const Bytes special = {0x03, 0x04, 0x0a, 0x0d, 0x11, 0x13, 0x7f, 0xff};
  EXPECT_TRUE(wire.send(special));
  Bytes received;
  while (received.size() < special.size()) {
    const auto part = readDevice(device.get(), 16);
    ASSERT_TRUE(part.result);
    received.insert(received.end(), part.bytes.begin(), part.bytes.end());
  }
  EXPECT_EQ(received, special);
  EXPECT_EQ(host_test::writeDevice(device.get(), special), success(special));
  EXPECT_EQ(wire.receive(special.size()), special) << "nothing echoed before, nothing translated";
}

/// Returns the descriptors that a program inherits when it is started now.
std::string inheritedDescriptors() {
  std::FILE* const list = popen("ls /proc/self/fd | wc -l", "r");
  char number[16] = {};
  EXPECT_NE(std::fgets(number, sizeof number, list), nullptr);
  pclose(list);
  return number;
}

TEST(CreateFileW, PassesNoDescriptorToOtherPrograms) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const std::string before = inheritedDescriptors();
  const OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_TRUE(device.isOpen());
  EXPECT_EQ(inheritedDescriptors(), before);
}

}  // namespace
