#include "link/pty_ipod.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>

#include <filesystem>
#include <fstream>

#include "faults/fault_text.h"
#include "support/hex.h"
#include "support/host_end.h"
#include "support/ipod_bench.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

const char* const kAskMode = "55 02 00 03 FB";
const char* const kModeOff = "55 03 00 04 00 F9";
const char* const kEnter = "55 02 00 05 F9";
const char* const kEntered = "55 04 00 02 00 05 F5";
const size_t kModeSize = 6;
const size_t kEnteredSize = 7;

/// Returns the CPU time of this process.
Time cpuTime() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return seconds(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         std::chrono::microseconds(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

class PtyIpodTest : public testing::Test {
 protected:
  // Waits, and returns the CPU time that was used meanwhile.
  Time cpuTimeOf(PtyIpod& pty, Time span) {
    const Time before = cpuTime();
    pty.waitUntil([](const SimulatedIpod&) { return false; }, span);
    return cpuTime() - before;
  }
  static bool plain(const SimulatedIpod& ipod) { return !ipod.inExtendedMode(); }

  TemporaryFolder folder;
  const fs::path link = folder / "ipod";
  SimulatedIpod ipod{Personality{}, smallLibrary()};
};

TEST_F(PtyIpodTest, AnswersOverThePseudoTerminal) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.isOpen());
  ASSERT_TRUE(host.write(kAskMode));
  EXPECT_EQ(host.read(kModeSize), kModeOff);
}

TEST_F(PtyIpodTest, SpeaksSerialFrames) {
  PtyIpod pty(ipod, FrameKind::kSerial);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write("FF 55 02 00 03 FB"));
  EXPECT_EQ(host.read(7), "FF 55 03 00 04 00 F9");
}

TEST_F(PtyIpodTest, SlaveIsRaw) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  termios settings;
  ASSERT_EQ(tcgetattr(host.descriptor(), &settings), 0);
  EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG | IEXTEN), 0u);
  EXPECT_EQ(settings.c_oflag & OPOST, 0u);
  EXPECT_EQ(settings.c_iflag & (ICRNL | IXON | ISTRIP), 0u);
}

TEST_F(PtyIpodTest, PassesEveryByteValue) {
  Personality personality;
  std::string name;
  for (int byte = 1; byte < 256; ++byte)
    name.push_back(static_cast<char>(byte));
  personality.name = name.substr(0, 250);
  SimulatedIpod named(personality, smallLibrary());
  PtyIpod pty(named, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write("55 02 00 07 F7"));
  const Bytes frame = hex(host.read(256));
  ASSERT_EQ(frame.size(), 256u);
  EXPECT_EQ(toHex(ByteView(frame).prefix(6)), "55 FD 00 08 01 02");
}

TEST_F(PtyIpodTest, SurvivesClosingAndOpening) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  for (int round = 0; round < 50; ++round) {
    HostEnd host(pty.slavePath());
    ASSERT_TRUE(host.isOpen());
    ASSERT_TRUE(host.write(kAskMode));
    ASSERT_EQ(host.read(kModeSize), kModeOff) << "round " << round;
    ASSERT_TRUE(host.write(kEnter));
    ASSERT_EQ(host.read(kEnteredSize), kEntered) << "round " << round;
  }
}

TEST_F(PtyIpodTest, AccessoryThatClosesIsForgotten) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kEnter));
  ASSERT_EQ(host.read(kEnteredSize), kEntered);
  pty.act([](SimulatedIpod& device, Time now) { device.pressPlay(now); });
  host.close();
  EXPECT_TRUE(pty.waitUntil(plain, seconds(5)));
  EXPECT_EQ(pty.access([](SimulatedIpod& device) { return device.player().state(); }),
            PlayState::kPaused);
}

TEST_F(PtyIpodTest, HandlesBytesThatWereWrittenJustBeforeClosing) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kEnter));
  host.close();
  EXPECT_TRUE(pty.waitUntil(
      [](const SimulatedIpod& device) {
        return device.countReceived(Lingo::kGeneral, kEnterRemoteUiMode) == 1;
      },
      seconds(5)));
  EXPECT_TRUE(pty.waitUntil(plain, seconds(5)));
}

TEST_F(PtyIpodTest, NextAccessoryDoesNotGetUnreadBytes) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd first(pty.slavePath());
  ASSERT_TRUE(first.write(kEnter));
  ASSERT_TRUE(pty.waitUntil(
      [](const SimulatedIpod& device) { return device.counters().messagesSent == 1; }, seconds(5)));
  first.close();
  ASSERT_TRUE(pty.waitUntil(plain, seconds(5)));
  HostEnd second(pty.slavePath());
  ASSERT_TRUE(second.write(kAskMode));
  EXPECT_EQ(second.read(kModeSize), kModeOff);
}

/// Takes 3 x 400 ms; a shorter time would not show whether the thread rests.
TEST_F(PtyIpodTest, UsesNoTimeWhileNothingHappens) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  EXPECT_LT(cpuTimeOf(pty, milliseconds(400)), milliseconds(40)) << "never opened";
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kEnter));
  ASSERT_EQ(host.read(kEnteredSize), kEntered);
  EXPECT_LT(cpuTimeOf(pty, milliseconds(400)), milliseconds(40)) << "open";
  host.close();
  ASSERT_TRUE(pty.waitUntil(plain, seconds(5)));
  EXPECT_LT(cpuTimeOf(pty, milliseconds(400)), milliseconds(40)) << "closed";
}

TEST_F(PtyIpodTest, PulledCableMakesTheReadFail) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  HostEnd host(pty.slavePath());
  pty.unplug();
  EXPECT_TRUE(host.readFails());
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  EXPECT_FALSE(HostEnd(pty.slavePath()).isOpen());
}

TEST_F(PtyIpodTest, CableCanBePluggedAgain) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  for (int round = 0; round < 5; ++round) {
    HostEnd host(pty.slavePath());
    ASSERT_TRUE(host.write(kEnter));
    ASSERT_EQ(host.read(kEnteredSize), kEntered);
    pty.unplug();
    pty.unplug();
    ASSERT_TRUE(host.readFails());
    pty.plug();
    pty.plug();
    HostEnd again(pty.slavePath());
    ASSERT_TRUE(again.write(kAskMode));
    ASSERT_EQ(again.read(kModeSize), kModeOff);
  }
}

TEST_F(PtyIpodTest, FaultPullsTheCableAfterItsBytes) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.access([](SimulatedIpod& device) { addFault(device.faults(), "unplug-sent=4"); });
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kAskMode));
  EXPECT_EQ(host.read(4), "55 03 00 04");
  EXPECT_TRUE(host.readFails());
  EXPECT_FALSE(pty.access([](SimulatedIpod& device) { return device.plugged(); }));
  pty.plug();
  HostEnd again(pty.slavePath());
  ASSERT_TRUE(again.write(kAskMode));
  EXPECT_EQ(again.read(kModeSize), kModeOff);
}

TEST_F(PtyIpodTest, LinkLeadsToTheSlaveAndIsRemovedAtTheEnd) {
  {
    PtyIpod pty(ipod, FrameKind::kUsb, link);
    pty.start();
    EXPECT_EQ(pty.slavePath(), link.string());
    EXPECT_EQ(fs::read_symlink(link).string().rfind("/dev/pts/", 0), 0u);
  }
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
}

TEST_F(PtyIpodTest, LinkOfADeadIpodIsReplaced) {
  fs::create_symlink("/dev/pts/99999999", link);
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  EXPECT_TRUE(HostEnd(link.string()).isOpen());
}

TEST_F(PtyIpodTest, OtherFileIsNotReplaced) {
  std::ofstream(link) << "precious";
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  EXPECT_THROW(pty.start(), LinkError);
  EXPECT_TRUE(fs::is_regular_file(link));
  fs::remove(link);
  SimulatedIpod other{Personality{}, smallLibrary()};
  PtyIpod next(other, FrameKind::kUsb, link);
  next.start();
  EXPECT_TRUE(HostEnd(link.string()).isOpen()) << "the refused one claims nothing";
}

TEST_F(PtyIpodTest, LinkOfARunningIpodIsKept) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  const fs::path slave = fs::read_symlink(link);
  SimulatedIpod other{Personality{}, smallLibrary()};
  PtyIpod next(other, FrameKind::kUsb, link);
  EXPECT_THROW(next.start(), LinkError);
  EXPECT_EQ(fs::read_symlink(link), slave);
  pty.stop();
  next.start();
  EXPECT_TRUE(HostEnd(link.string()).isOpen());
}

TEST_F(PtyIpodTest, LinkIsReservedWhileTheCableIsPulled) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  pty.unplug();
  SimulatedIpod other{Personality{}, smallLibrary()};
  PtyIpod next(other, FrameKind::kUsb, link);
  EXPECT_THROW(next.start(), LinkError);
  pty.plug();
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskMode));
  EXPECT_EQ(host.read(kModeSize), kModeOff);
}

TEST_F(PtyIpodTest, LinkOfAnotherProcessIsNotRemovedAtTheEnd) {
  {
    PtyIpod pty(ipod, FrameKind::kUsb, link);
    pty.start();
    fs::remove(link);
    fs::create_symlink("/nowhere", link);
  }
  EXPECT_EQ(fs::read_symlink(link), "/nowhere");
}

TEST_F(PtyIpodTest, AccessoryThatReadsLateGetsEverything) {
  MusicLibrary library;
  Track track;
  track.title = std::string(200, 'x');
  library.tracks.assign(2000, track);
  SimulatedIpod large(Personality{}, library);
  PtyIpod pty(large, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kEnter));
  ASSERT_EQ(host.read(kEnteredSize), kEntered);
  ASSERT_TRUE(host.write("55 0C 04 00 1A 05 00 00 00 00 FF FF FF FF D5"));
  ASSERT_TRUE(pty.waitUntil(
      [](const SimulatedIpod& device) { return device.counters().messagesSent == 2001; },
      seconds(20)));
  const size_t frameSize = 211;
  const Bytes all = hex(host.read(2000 * frameSize, seconds(20)));
  ASSERT_EQ(all.size(), 2000 * frameSize);
  EXPECT_EQ(usbPayloads(all).size(), 2000u);
}

TEST_F(PtyIpodTest, ActionsAreSentWhileTheAccessoryListens) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  HostEnd host(pty.slavePath());
  ASSERT_TRUE(host.write(kEnter));
  ASSERT_EQ(host.read(kEnteredSize), kEntered);
  ASSERT_TRUE(host.write("55 04 04 00 26 01 D1"));
  ASSERT_EQ(host.read(9), "55 06 04 00 01 00 00 26 CF");
  pty.act([](SimulatedIpod& device, Time now) { device.pressPlay(now); });
  EXPECT_EQ(host.read(11), "55 08 04 00 27 01 00 00 00 00 CC");
}

TEST_F(PtyIpodTest, StopsAtOnceAndStartsAgain) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.start();
  const auto before = std::chrono::steady_clock::now();
  pty.stop();
  EXPECT_LT(std::chrono::steady_clock::now() - before, seconds(1));
  EXPECT_FALSE(HostEnd(link.string()).isOpen());
  pty.start();
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskMode));
  EXPECT_EQ(host.read(kModeSize), kModeOff);
}

TEST_F(PtyIpodTest, CanEndWithoutAStart) {
  PtyIpod pty(ipod, FrameKind::kUsb, link);
  pty.unplug();
  pty.plug();
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
}

TEST_F(PtyIpodTest, WaitingHasAnEnd) {
  PtyIpod pty(ipod, FrameKind::kUsb);
  pty.start();
  EXPECT_FALSE(pty.waitUntil([](const SimulatedIpod&) { return false; }, milliseconds(20)));
  EXPECT_TRUE(pty.waitUntil([](const SimulatedIpod&) { return true; }, Time(0)));
}

}  // namespace
}  // namespace simulator
