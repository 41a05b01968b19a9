// What IPODCTL_TRACE records of devices and of the audio library.
#include <desk.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <isochplay_desk.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "support/background_call.h"
#include "support/device_calls.h"
#include "support/eventually.h"
#include "support/pty_pair.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"

namespace recorder {
namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::failure;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::PtyPair;
using host_test::readDevice;
using host_test::success;
using host_test::Transfer;
using host_test::writeDevice;
using recorded::Lines;
using recorded::textsOf;
using simulator::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

/// Sets IPODCTL_TRACE during its lifetime. The platform sees the change at the next open.
class TraceTo {
 public:
  explicit TraceTo(const std::string& path) { setenv("IPODCTL_TRACE", path.c_str(), 1); }
  TraceTo(const TraceTo&) = delete;
  TraceTo& operator=(const TraceTo&) = delete;
  ~TraceTo() { unsetenv("IPODCTL_TRACE"); }
};

void ignoreAudio(void*, const IsochplayCall*) {}

class Recorder : public testing::Test {
 protected:
  Recorder() { isochplaySetSink(ignoreAudio, nullptr); }
  ~Recorder() override { isochplaySetSink(nullptr, nullptr); }

  /// Opens a device that does not exist, without a trace: the one before is then complete.
  static void endTrace() {
    unsetenv("IPODCTL_TRACE");
    openDevice(u"none");
  }

  Lines recorded() const {
    endTrace();
    return textsOf(path);
  }

  const TemporaryFolder folder;
  const std::string path = (folder / "car.trace").string();
  PtyPair wire;
  const DeviceMapping devices{"IPD1:=" + wire.path() + ",COM1:=" + wire.path()};
};

TEST_F(Recorder, RecordsWhatADeviceReadsAndWrites) {
  const TraceTo trace(path);
  OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x02, 0x00, 0x07, 0xF7}),
            success({0x55, 0x02, 0x00, 0x07, 0xF7}));
  EXPECT_TRUE(wire.sendAndArrive({0x55, 0x03}));
  EXPECT_EQ(readDevice(device.get(), 100), success({0x55, 0x03}));
  EXPECT_TRUE(device.close());
  EXPECT_THAT(recorded(), ElementsAre("# IPD1: open ok", "IPD1: > 55 02 00 07 F7", "IPD1: < 55 03",
                                      "# IPD1: close"));
}

/// The lines that a program's sink receives during its lifetime, without their times.
class SunkLines {
 public:
  SunkLines() { deskSetTraceSink(add, this); }
  SunkLines(const SunkLines&) = delete;
  SunkLines& operator=(const SunkLines&) = delete;
  ~SunkLines() { deskSetTraceSink(nullptr, nullptr); }

  Lines texts() const { return lines; }

 private:
  static void add(void* context, const char* text, unsigned size) {
    const std::string line(text, size);
    const size_t time = line[0] == '#' ? 2 : 0;
    const std::string end = line.substr(line.find(' ', time) + 1);
    static_cast<SunkLines*>(context)->lines.push_back(line.substr(0, time) + end);
  }

  Lines lines;
};

TEST_F(Recorder, PassesEachLineToTheSinkWithoutAFile) {
  const SunkLines sunk;
  OwnedHandle device(openDevice(u"IPD1:"));
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x02}), success({0x55, 0x02}));
  EXPECT_TRUE(wire.sendAndArrive({0x55, 0x03}));
  EXPECT_EQ(readDevice(device.get(), 100), success({0x55, 0x03}));
  constexpr int kRate = 48000;
  deskTraceAudio("SelectFrequency", &kRate, 1);
  EXPECT_TRUE(device.close());
  EXPECT_THAT(sunk.texts(), ElementsAre("# IPD1: open ok\n", "IPD1: > 55 02\n", "IPD1: < 55 03\n",
                                        "# audio SelectFrequency 48000\n", "# IPD1: close\n"));
}

TEST_F(Recorder, PassesEachLineToTheSinkAndToTheFile) {
  const TraceTo trace(path);
  {
    const SunkLines sunk;
    openDevice(u"IPD2:");
    EXPECT_THAT(sunk.texts(), ElementsAre("# IPD2: open failed 2\n"));
  }
  openDevice(u"IPD3:");
  EXPECT_THAT(recorded(), ElementsAre("# IPD2: open failed 2", "# IPD3: open failed 2"));
}

TEST_F(Recorder, PassesNothingToASinkThatWasRemoved) {
  unsigned lines = 0;
  deskSetTraceSink([](void* context, const char*, unsigned) { ++*static_cast<unsigned*>(context); },
                   &lines);
  openDevice(u"IPD2:");
  EXPECT_EQ(lines, 1U);
  deskSetTraceSink(nullptr, nullptr);
  openDevice(u"IPD2:");
  EXPECT_EQ(lines, 1U);
}

TEST_F(Recorder, RecordsASerialPortToo) {
  const TraceTo trace(path);
  OwnedHandle port(openDevice(u"com1:"));
  EXPECT_TRUE(wire.send({0xFF, 0x55}));
  EXPECT_EQ(readDevice(port.get(), 2), success({0xFF, 0x55}));
  EXPECT_TRUE(port.close());
  const Lines lines = recorded();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "# com1: open ok");
  std::string bytes;
  for (const std::string& line : lines) {
    if (line.rfind("com1: <", 0) == 0) bytes += line.substr(7);
  }
  EXPECT_EQ(bytes, " FF 55");
}

TEST_F(Recorder, RecordsAnOpenThatFails) {
  const TraceTo trace(path);
  openDevice(u"IPD2:");
  const OwnedHandle device(openDevice(u"IPD1:"));
  openDevice(u"COM1:");
  openDevice(u"\u0249 x:");
  EXPECT_THAT(recorded(), ElementsAre("# IPD2: open failed 2", "# IPD1: open ok",
                                      "# COM1: open failed 32", "# ??x: open failed 2"));
}

TEST_F(Recorder, RecordsThatTheCableIsPulled) {
  const TraceTo trace(path);
  OwnedHandle device(openDevice(u"IPD1:"));
  wire.hangUp();
  EXPECT_EQ(readDevice(device.get(), 1), failure(ERROR_GEN_FAILURE));
  EXPECT_EQ(writeDevice(device.get(), {1}), failure(ERROR_GEN_FAILURE));
  EXPECT_TRUE(device.close());
  EXPECT_THAT(recorded(), ElementsAre("# IPD1: open ok", "# IPD1: read-failed 31",
                                      "# IPD1: write-failed 31", "# IPD1: close"));
}

TEST_F(Recorder, DoesNotTakeACloseForAFailureOfTheDevice) {
  const TraceTo trace(path);
  OwnedHandle device(openDevice(u"IPD1:"));
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 1); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(device.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
  EXPECT_THAT(recorded(), ElementsAre("# IPD1: open ok", "# IPD1: close"));
}

TEST_F(Recorder, RecordsTheCallsOfTheAudioLibrary) {
  const TraceTo trace(path);
  const OwnedHandle device(openDevice(u"IPD1:"));
  WAVEFORMATEX format = {};
  format.nSamplesPerSec = 44100;
  format.nChannels = 2;
  format.wBitsPerSample = 16;
  SelectFullBandwithInterface();
  StartIpodAudioPlay(&format);
  StartIpodAudioPlay(nullptr);
  SelectFrequency(48000);
  IpodAudioPresent(1, -2, 3, 4);
  StopIpodAudioPlay();
  SelectZeroBandwithInterface();
  EXPECT_THAT(recorded(),
              ElementsAre("# IPD1: open ok", "# audio SelectFullBandwithInterface",
                          "# audio StartIpodAudioPlay 44100 2 16", "# audio StartIpodAudioPlay",
                          "# audio SelectFrequency 48000", "# audio IpodAudioPresent 1 -2 3 4",
                          "# audio StopIpodAudioPlay", "# audio SelectZeroBandwithInterface"));
}

TEST_F(Recorder, FollowsTheEnvironmentAtEachOpen) {
  const std::string second = (folder / "second.trace").string();
  {
    const TraceTo trace(path);
    openDevice(u"first");
    openDevice(u"first");
  }
  openDevice(u"unrecorded");
  {
    const TraceTo trace(second);
    openDevice(u"second");
  }
  endTrace();
  EXPECT_THAT(textsOf(path), ElementsAre("# first open failed 2", "# first open failed 2"));
  EXPECT_THAT(textsOf(second), ElementsAre("# second open failed 2"));
}

TEST_F(Recorder, ReportsOnceThatAFileCannotBeWritten) {
  const TraceTo trace((folder / "none/car.trace").string());
  CaptureStderr();
  for (int i = 0; i < 3; ++i) {
    const OwnedHandle device(openDevice(u"IPD1:"));
    EXPECT_TRUE(device.isOpen());
    EXPECT_TRUE(wire.send({0x55}));
    EXPECT_EQ(readDevice(device.get(), 1), success({0x55}));
  }
  EXPECT_EQ(GetCapturedStderr(),
            "ipodctl: IPODCTL_TRACE: cannot record to " + (folder / "none/car.trace").string() +
                ": No such file or directory; name a file that you may write, in a folder that "
                "exists\n");
}

/// Runs `program` in a process that is forked now. Returns its exit status.
template <typename Program>
int inAnotherProcess(Program program) {
  const pid_t other = fork();
  if (other == 0) std::exit(program());
  int status = -1;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// What another process prints to standard error.
class Errors {
 public:
  Errors() {
    if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  }
  Errors(const Errors&) = delete;
  Errors& operator=(const Errors&) = delete;
  ~Errors() {
    close(ends[0]);
    if (ends[1] >= 0) close(ends[1]);
  }

  /// For the other process.
  void redirect() const { dup2(ends[1], STDERR_FILENO); }
  /// Returns everything, when the other process has ended.
  std::string text() {
    close(std::exchange(ends[1], -1));
    char some[4096];
    const ssize_t size = read(ends[0], some, sizeof some);
    return size > 0 ? std::string(some, static_cast<size_t>(size)) : "";
  }

 private:
  int ends[2] = {-1, -1};
};

TEST_F(Recorder, AFullDiskDisturbsNothing) {
  constexpr size_t kRequests = 200;
  Errors errors;
  const int status = inAnotherProcess([&] {
    errors.redirect();
    const TraceTo trace(path);
    const OwnedHandle device(openDevice(u"IPD1:"));
    const rlimit small = {100, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &small);
    for (size_t i = 0; i < kRequests; ++i) {
      if (!(writeDevice(device.get(), {0x55}) == success({0x55}))) return 1;
      usleep(1000);
    }
    return 0;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(wire.receive(kRequests), Bytes(kRequests, 0x55));
  EXPECT_EQ(errors.text(), "ipodctl: IPODCTL_TRACE: the trace " + path +
                               " ends here: File too large; make room or name another file, and "
                               "record again\n");
}

TEST_F(Recorder, WritesTheRestAtTheEndOfTheProcess) {
  const int status = inAnotherProcess([&] {
    const TraceTo trace(path);
    writeDevice(openDevice(u"IPD1:"), {0x55});
    return 7;
  });
  EXPECT_EQ(status, 7);
  EXPECT_THAT(textsOf(path), ElementsAre("# IPD1: open ok", "IPD1: > 55"));
}

/// The thread that writes is in the parent: the other process must not wait for it at its end.
TEST_F(Recorder, LeavesTheTraceOfItsParentAlone) {
  const TraceTo trace(path);
  OwnedHandle device(openDevice(u"IPD1:"));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(inAnotherProcess([&] {
              writeDevice(device.get(), {0x55});
              return 7;
            }),
            7);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1500));
  EXPECT_TRUE(device.close());
  EXPECT_THAT(recorded(), ElementsAre("# IPD1: open ok", "# IPD1: close"));
}

TEST_F(Recorder, MakesNoFileWithoutTheVariable) {
  for (const char* const value : {"", "unset"}) {
    setenv("IPODCTL_TRACE", value, 1);
    if (std::string(value) == "unset") unsetenv("IPODCTL_TRACE");
    const OwnedHandle device(openDevice(u"IPD1:"));
    EXPECT_EQ(writeDevice(device.get(), {0x55}), success({0x55}));
  }
  unsetenv("IPODCTL_TRACE");
  EXPECT_TRUE(std::filesystem::is_empty(folder / "."));
}

}  // namespace
}  // namespace recorder
