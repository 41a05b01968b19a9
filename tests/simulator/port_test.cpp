// The iPod at a serial port and at a TCP port.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <termios.h>

#include <fstream>
#include <mutex>

#include "database/catalogue.h"
#include "link/pty_ipod.h"
#include "link/socket_port.h"
#include "link/terminal_port.h"
#include "support/eventually.h"
#include "support/host_end.h"
#include "support/pty_pair.h"
#include "support/small_library.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

using session::eventually;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

/// The lines for the user, which another thread writes.
class Notices {
 public:
  PortNotice sink() {
    return [this](const std::string& text) {
      const std::lock_guard<std::mutex> lock(mutex);
      texts.push_back(text);
    };
  }
  std::vector<std::string> all() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return texts;
  }

 private:
  mutable std::mutex mutex;
  std::vector<std::string> texts;
};

Time cpuTimeOfThisProgram() {
  rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return std::chrono::seconds(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         std::chrono::microseconds(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

/// Waits, and returns the CPU time that the program uses meanwhile.
Time cpuTimeDuring(PtyIpod& pty, Time span) {
  const Time before = cpuTimeOfThisProgram();
  pty.waitUntil([](const SimulatedIpod&) { return false; }, span);
  return cpuTimeOfThisProgram() - before;
}

constexpr const char* kAskForMode = "55 02 00 03 FB";
constexpr const char* kModeIsOff = "55 03 00 04 00 F9";

class TerminalPortTest : public testing::Test {
 protected:
  PortMaker maker(unsigned baud = 57600) {
    return
        [this, baud] { return std::make_unique<TerminalPort>(wire.path(), baud, notices.sink()); };
  }

  std::string refusalOf(const std::string& path, unsigned baud = 57600) {
    try {
      const TerminalPort port(path, baud, notices.sink());
    } catch (const PortError& refused) {
      return refused.what();
    }
    return "not refused";
  }

  host_test::PtyPair wire;
  Notices notices;
  SimulatedIpod ipod{Personality{}, smallLibrary()};
};

TEST_F(TerminalPortTest, CarriesSerialFramesAtItsSpeed) {
  PtyIpod pty(ipod, FrameKind::kSerial, maker(9600));
  pty.start();
  EXPECT_EQ(pty.slavePath(), wire.path());
  EXPECT_TRUE(wire.send({0xFF, 0x55, 0x02, 0x00, 0x03, 0xFB}));
  EXPECT_EQ(wire.receive(7), (Bytes{0xFF, 0x55, 0x03, 0x00, 0x04, 0x00, 0xF9}));
  const termios settings = wire.settings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B9600});
  EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG), 0u);
}

TEST_F(TerminalPortTest, ClosesTheDeviceWhenTheCableIsPulled) {
  PtyIpod pty(ipod, FrameKind::kSerial, maker());
  pty.start();
  pty.unplug();
  EXPECT_TRUE(wire.waitUntilDeviceCloses());
  pty.plug();
  EXPECT_TRUE(wire.send({0xFF, 0x55, 0x02, 0x00, 0x03, 0xFB}));
  EXPECT_EQ(wire.receive(7), (Bytes{0xFF, 0x55, 0x03, 0x00, 0x04, 0x00, 0xF9}));
}

TEST_F(TerminalPortTest, ReportsOnceThatTheDeviceIsGone) {
  PtyIpod pty(ipod, FrameKind::kSerial, maker());
  pty.start();
  const std::string path = wire.path();
  wire.hangUp();
  EXPECT_TRUE(eventually([&] { return !notices.all().empty(); }));
  EXPECT_LT(cpuTimeDuring(pty, milliseconds(300)), milliseconds(150));
  EXPECT_THAT(notices.all(), ElementsAre(path + " is gone; plug it in and start ipodsim again"));
}

TEST_F(TerminalPortTest, RefusesWhatIsNotAFreeSerialPort) {
  EXPECT_EQ(refusalOf("/dev/null"),
            "cannot use /dev/null: it is not a terminal; name a serial port, like /dev/ttyUSB0");
  EXPECT_EQ(refusalOf("/none/tty"),
            "cannot use /none/tty: No such file or directory; name a serial port that this user "
            "may open, like /dev/ttyUSB0");
  EXPECT_EQ(refusalOf(wire.path(), 57601),
            "cannot use " + wire.path() + ": it does not accept 57601 baud; try --baud 57600");
  const TerminalPort first(wire.path(), 57600, notices.sink());
  EXPECT_EQ(refusalOf(wire.path()),
            "cannot use " + wire.path() + ": another program has it open; end that program");
}

class SocketPortTest : public testing::Test {
 protected:
  PortMaker maker() {
    return [this] { return std::make_unique<SocketPort>("127.0.0.1", 0, notices.sink()); };
  }

  Notices notices;
  SimulatedIpod ipod{Personality{}, smallLibrary()};
  PtyIpod pty{ipod, FrameKind::kUsb, maker()};
};

TEST_F(SocketPortTest, AnswersAClient) {
  pty.start();
  EXPECT_THAT(pty.slavePath(), MatchesRegex("127\\.0\\.0\\.1:[0-9]+"));
  HostEnd host = HostEnd::connectedTo(pty.slavePath());
  ASSERT_TRUE(host.write(kAskForMode));
  EXPECT_EQ(host.read(6), kModeIsOff);
}

TEST_F(SocketPortTest, RefusesASecondClientMeanwhile) {
  pty.start();
  HostEnd first = HostEnd::connectedTo(pty.slavePath());
  ASSERT_TRUE(first.write(kAskForMode));
  EXPECT_EQ(first.read(6), kModeIsOff);
  HostEnd second = HostEnd::connectedTo(pty.slavePath());
  EXPECT_TRUE(second.readFails());
  EXPECT_THAT(notices.all(),
              ElementsAre(MatchesRegex("a second client is refused: 127\\.0\\.0\\.1:[0-9]+")));
  ASSERT_TRUE(first.write(kAskForMode));
  EXPECT_EQ(first.read(6), kModeIsOff);
}

TEST_F(SocketPortTest, AcceptsTheNextClientWhenTheFirstHasGone) {
  pty.start();
  for (int round = 0; round < 20; ++round) {
    HostEnd host = HostEnd::connectedTo(pty.slavePath());
    ASSERT_TRUE(host.write(kAskForMode));
    ASSERT_EQ(host.read(6), kModeIsOff) << round;
  }
  EXPECT_THAT(notices.all(), IsEmpty());
}

TEST_F(SocketPortTest, ForgetsAnAccessoryThatHasGone) {
  pty.start();
  HostEnd host = HostEnd::connectedTo(pty.slavePath());
  ASSERT_TRUE(host.write("55 02 00 05 F9"));
  EXPECT_EQ(host.read(7), "55 04 00 02 00 05 F5");
  EXPECT_TRUE(pty.access([](SimulatedIpod& device) { return device.inExtendedMode(); }));
  host.close();
  EXPECT_TRUE(pty.waitUntil([](const SimulatedIpod& device) { return !device.inExtendedMode(); },
                            seconds(5)));
}

TEST_F(SocketPortTest, EndsTheStreamWhenTheCableIsPulled) {
  pty.start();
  HostEnd host = HostEnd::connectedTo(pty.slavePath());
  ASSERT_TRUE(host.write(kAskForMode));
  EXPECT_EQ(host.read(6), kModeIsOff);
  const std::string place = pty.slavePath();
  pty.unplug();
  EXPECT_TRUE(host.readFails());
  EXPECT_FALSE(HostEnd::connectedTo(place).isOpen());
}

TEST_F(SocketPortTest, DoesNothingWhileNothingHappens) {
  pty.start();
  EXPECT_LT(cpuTimeDuring(pty, milliseconds(300)), milliseconds(150));
  const HostEnd host = HostEnd::connectedTo(pty.slavePath());
  EXPECT_LT(cpuTimeDuring(pty, milliseconds(300)), milliseconds(150));
}

TEST_F(SocketPortTest, RefusesAPlaceThatIsNotOfThisMachine) {
  const auto refusalOf = [&](const std::string& address, uint16_t port) -> std::string {
    try {
      const SocketPort made(address, port, notices.sink());
    } catch (const PortError& refused) {
      return refused.what();
    }
    return "not refused";
  };
  EXPECT_EQ(refusalOf("192.0.2.1", 5000),
            "cannot listen on 192.0.2.1:5000: Cannot assign requested address; try another port, "
            "or an address of this machine");
  EXPECT_EQ(refusalOf("car", 5000),
            "cannot listen on car:5000: that is not an address; write one like 127.0.0.1:5000");
  const SocketPort first("127.0.0.1", 0, notices.sink());
  const std::string number = first.place().substr(first.place().find(':') + 1);
  EXPECT_THAT(refusalOf("127.0.0.1", static_cast<uint16_t>(std::stoi(number))),
              HasSubstr(": Address already in use; try another port"));
}

}  // namespace
}  // namespace simulator
