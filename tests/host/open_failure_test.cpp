// What the platform says when a device cannot be opened. A separate program: the same line is
// written once in a process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "support/device_calls.h"
#include "support/pty_pair.h"
#include "support/temporary_folder.h"

namespace open_failure {
namespace {

using host_test::DeviceMapping;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;
using simulator::TemporaryFolder;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

/// Returns what an open that must fail writes to standard error.
std::string complaintOf(LPCWSTR name) {
  CaptureStderr();
  EXPECT_EQ(openDevice(name), INVALID_HANDLE_VALUE);
  return GetCapturedStderr();
}

std::string complaintAbout(const std::string& end) {
  const DeviceMapping devices("IPD1:=" + end);
  return complaintOf(u"IPD1:");
}

TEST(OpenFailure, SaysThatANameIsNotMapped) {
  const DeviceMapping devices("COM1:=/dev/null");
  EXPECT_EQ(complaintOf(u"IPD2:"),
            "ipodctl: IPD2: is not in IPODCTL_DEVICES; add it, for example "
            "IPODCTL_DEVICES=IPD2:=/tmp/ipod\n");
}

TEST(OpenFailure, SaysThatAnEmptyMapHasNoDevice) {
  const DeviceMapping devices("");
  EXPECT_EQ(complaintOf(u"IPD1:"),
            "ipodctl: IPD1: is not in IPODCTL_DEVICES; add it, for example "
            "IPODCTL_DEVICES=IPD1:=/tmp/ipod\n");
}

TEST(OpenFailure, SaysThatAPathIsNotATerminal) {
  const TemporaryFolder folder;
  const std::string file = (folder / "file").string();
  std::ofstream(file) << "x";
  for (const std::string& path : {std::string("/dev/null"), file, (folder / ".").string()}) {
    EXPECT_EQ(complaintAbout(path), "ipodctl: IPD1: " + path +
                                        " is not a terminal; correct the path in "
                                        "IPODCTL_DEVICES\n");
  }
}

TEST(OpenFailure, SaysThatThereIsNoSuchFile) {
  const TemporaryFolder folder;
  const std::string path = (folder / "ipod").string();
  EXPECT_EQ(complaintAbout(path),
            "ipodctl: IPD1: " + path +
                ": no such file; start ipodsim, plug the iPod in, or correct IPODCTL_DEVICES\n");
  EXPECT_EQ(complaintAbout(""),
            "ipodctl: IPD1: has no path in IPODCTL_DEVICES; write one after the =\n");
}

TEST(OpenFailure, SaysThatATerminalIsInUse) {
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  const OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_EQ(complaintOf(u"IPD1:"),
            "ipodctl: IPD1: " + wire.path() + " is in use; end the program that has it open\n");
}

TEST(OpenFailure, IsSaidOnceACause) {
  EXPECT_NE(complaintAbout("/none/once"), "");
  EXPECT_EQ(complaintAbout("/none/once"), "");
  EXPECT_NE(complaintAbout("/none/another"), "");
  EXPECT_EQ(complaintAbout("/none/once"), "");
}

TEST(OpenFailure, IsALineWithoutWhatATerminalObeys) {
  EXPECT_THAT(complaintAbout("/none/\x1b[31m\nred\x7f"),
              HasSubstr("ipodctl: IPD1: /none/?[31m?red?: no such file"));
}

/// Standard output can be in the same file as standard error, and keeps lines back.
TEST(OpenFailure, IsNotInsideALineOfTheProgram) {
  const TemporaryFolder folder;
  const std::string path = (folder / "output").string();
  const int before[] = {dup(STDOUT_FILENO), dup(STDERR_FILENO)};
  std::FILE* const file = std::fopen(path.c_str(), "a");
  dup2(fileno(file), STDOUT_FILENO);
  dup2(fileno(file), STDERR_FILENO);
  std::printf("IpodConnect start\n");
  const DeviceMapping devices("IPD1:=/none/inside");
  openDevice(u"IPD1:");
  std::printf("IpodConnect end\n");
  std::fflush(stdout);
  dup2(before[0], STDOUT_FILENO);
  dup2(before[1], STDERR_FILENO);
  close(before[0]);
  close(before[1]);
  std::fclose(file);
  std::ifstream output(path);
  std::string line;
  std::getline(output, line);
  EXPECT_EQ(line, "IpodConnect start");
  std::getline(output, line);
  EXPECT_THAT(line, HasSubstr("ipodctl: IPD1: /none/inside: no such file"));
  std::getline(output, line);
  EXPECT_EQ(line, "IpodConnect end");
}

TEST(OpenFailure, ExplainsASerialLineThatIsNotComplete) {
  for (const char* const text : {"serial:/dev/ttyUSB0", "serial:", "serial:@57600"}) {
    EXPECT_EQ(complaintAbout(text), std::string("ipodctl: IPD1: ") + text +
                                        " is not complete; write it like "
                                        "serial:/dev/ttyUSB0@57600\n");
  }
  for (const char* const text :
       {"serial:/dev/null@", "serial:/dev/null@fast", "serial:/dev/null@57601",
        "serial:/dev/null@-57600", "serial:/dev/null@99999999999"}) {
    EXPECT_EQ(complaintAbout(text),
              std::string("ipodctl: IPD1: ") + text +
                  " has no usual speed; write one of 300 600 1200 2400 4800 9600 19200 38400 57600 "
                  "115200 230400 460800 500000 921600 after the @\n");
  }
  EXPECT_THAT(complaintAbout("serial:/dev/zero@9600"), HasSubstr("/dev/zero is not a terminal"));
}

TEST(OpenFailure, ExplainsAPortThatIsNotComplete) {
  for (const char* const text : {"tcp:", "tcp:localhost", "tcp::5000", "tcp:localhost:",
                                 "tcp:localhost:0", "tcp:localhost:65536", "tcp:localhost:http"}) {
    EXPECT_EQ(complaintAbout(text), std::string("ipodctl: IPD1: ") + text +
                                        " is not complete; write it like tcp:127.0.0.1:5000, with "
                                        "a port from 1 to 65535\n");
  }
}

TEST(OpenFailure, ExplainsThatASerialPortHasATerminal) {
  const DeviceMapping devices("COM1:=serial:/dev/ttyUSB0@57600,COM2:=tcp:localhost:5000");
  for (const LPCWSTR name : {u"COM1:", u"COM2:"}) {
    EXPECT_THAT(complaintOf(name),
                HasSubstr("is a serial port; write only the path of its terminal"));
  }
}

/// Sets IPODCTL_DEBUG during its lifetime.
class Debugging {
 public:
  explicit Debugging(const char* value) { setenv("IPODCTL_DEBUG", value, 1); }
  Debugging(const Debugging&) = delete;
  Debugging& operator=(const Debugging&) = delete;
  ~Debugging() { unsetenv("IPODCTL_DEBUG"); }
};

TEST(OpenFailure, WithDebuggingEachOpenIsALine) {
  const Debugging debugging("1");
  const PtyPair wire;
  const DeviceMapping devices("IPD1:=serial:" + wire.path() + "@57600");
  for (int round = 0; round < 2; ++round) {
    CaptureStderr();
    OwnedHandle(openDevice(u"IPD1:"));
    EXPECT_EQ(GetCapturedStderr(), "ipodctl: IPD1: is open: serial:" + wire.path() +
                                       "@57600, 57600 baud, 8 bits, no parity, 1 stop bit, "
                                       "IPODCTL_DEVICES=\"IPD1:=serial:" +
                                       wire.path() + "@57600\"\n");
    EXPECT_THAT(complaintOf(u"IPD3:"),
                HasSubstr("ipodctl: IPD3: is not open: error 2, IPODCTL_DEVICES=\"IPD1:="));
  }
}

TEST(OpenFailure, WithoutDebuggingAnOpenIsSilent) {
  const Debugging debugging("0");
  const PtyPair wire;
  const DeviceMapping devices("IPD1:", wire);
  CaptureStderr();
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
  EXPECT_EQ(GetCapturedStderr(), "");
}

}  // namespace
}  // namespace open_failure
