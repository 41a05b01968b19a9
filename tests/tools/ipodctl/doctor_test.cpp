#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "ipodctl/device_map.h"
#include "ipodctl/probed_line.h"
#include "support/program.h"
#include "support/pty_pair.h"
#include "support/temporary_folder.h"

namespace tool {
namespace {

using simulator::Program;
using testing::AnyOf;
using testing::HasSubstr;
using testing::Not;

std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  content << std::ifstream(file).rdbuf();
  return content.str();
}

struct Examination {
  std::optional<int> status;
  std::string output;
  std::string errors;
};

class DoctorTest : public testing::Test {
 protected:
  /// Starts a simulated iPod, which is ready when this returns.
  void plugIn(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--link", link.string()});
    ipod = std::make_unique<Program>(IPODSIM_PROGRAM, arguments);
    ASSERT_EQ(ipod->readLine(), "iPod ready on " + link.string()) << ipod->errors();
  }

  std::unique_ptr<Program> start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "doctor");
    return std::make_unique<Program>(IPODCTL_PROGRAM, arguments);
  }

  static Examination resultOf(Program& program) {
    Examination run;
    while (const auto line = program.readLine(simulator::seconds(60)))
      run.output += *line + "\n";
    run.status = program.waitForEnd();
    run.errors = program.errors();
    return run;
  }

  /// Runs `ipodctl doctor` for what is at the link.
  Examination examine(std::vector<std::string> more = {}) {
    more.insert(more.end(), {"--device", link.string(), "--trace", file.string()});
    return resultOf(*start(more));
  }

  simulator::TemporaryFolder folder;
  const std::filesystem::path link = folder / "ipod";
  const std::filesystem::path file = folder / "a.trace";
  std::unique_ptr<Program> ipod;
};

TEST_F(DoctorTest, PrintsEveryStepOfAHealthySession) {
  plugIn({});
  const Examination run = examine();
  EXPECT_EQ(run.status, 0);
  for (const char* step :
       {"ok      the device opens", "ok      the iPod accepts the announcement",
        "ok      it asks about the head unit", "ok      it asks for the sample rates",
        "ok      it is identified", "ok      it enters the Extended Interface mode",
        "ok      it returns its name", "ok      it returns its serial number",
        "ok      it counts its artists", "ok      it says what plays"}) {
    EXPECT_THAT(run.output, HasSubstr(step));
  }
  EXPECT_THAT(run.output, HasSubstr("no fault found, 1 connection"));
  EXPECT_THAT(run.output, Not(HasSubstr("FAILED")));
  EXPECT_EQ(run.errors, "");
}

TEST_F(DoctorTest, SaysBeforehandThatPlaybackStops) {
  plugIn({});
  EXPECT_EQ(examine().output.find("Connecting stops what the iPod plays.\n"), 0u);
}

TEST_F(DoctorTest, SaysWhereTheTraceIs) {
  plugIn({});
  EXPECT_THAT(examine().output, HasSubstr("The trace: " + file.string() + "\n"));
  EXPECT_EQ(contentOf(file).find("# ipodctl-trace 1\n"), 0u);
}

TEST_F(DoctorTest, MakesATraceThatOnlyItsUserCanRead) {
  plugIn({});
  const std::string place = (folder / "").string();
  setenv("TMPDIR", place.c_str(), 1);
  const Examination run = resultOf(*start({"--device", link.string()}));
  unsetenv("TMPDIR");
  const size_t name = run.output.find(place);
  ASSERT_NE(name, std::string::npos) << run.output;
  const std::string made = run.output.substr(name, run.output.find('\n', name) - name);
  struct stat status = {};
  ASSERT_EQ(stat(made.c_str(), &status), 0) << made;
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
}

TEST_F(DoctorTest, NamesTheCauseOfAMissingDevice) {
  const Examination run = examine();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("FAILED  the device opens\n"));
  EXPECT_THAT(run.output, HasSubstr("-       it says what plays\n"));
  EXPECT_THAT(run.output, HasSubstr("cause: device-missing\n"));
}

TEST_F(DoctorTest, NamesTheStepAtWhichAnIpodFails) {
  plugIn({"--fault", "silence@00:0013"});
  const Examination run = examine();
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("ok      the device opens"));
  EXPECT_THAT(run.output, HasSubstr("FAILED  the iPod accepts the announcement\n"));
  EXPECT_THAT(run.output, HasSubstr("cause: "));
}

TEST_F(DoctorTest, GoesOnAfterAStepThatASessionCanDoWithout) {
  plugIn({"--fault", "lost@00:0013"});
  const Examination run = examine();
  EXPECT_EQ(run.status, 0) << run.output;
  EXPECT_THAT(run.output, HasSubstr("-       the iPod accepts the announcement (not seen)\n"));
  EXPECT_THAT(run.output, HasSubstr("ok      it is identified"));
}

TEST_F(DoctorTest, LeavesAFileAloneThatIsNotATrace) {
  std::ofstream(file) << "a letter\n";
  const Examination run = examine();
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.errors, HasSubstr("is not a trace"));
  EXPECT_EQ(run.output, "");
  EXPECT_EQ(contentOf(file), "a letter\n");
}

TEST_F(DoctorTest, RefusesAnUnknownOption) {
  const Examination run = resultOf(*start({"--prob"}));
  EXPECT_EQ(run.status, 2);
  EXPECT_THAT(run.errors, HasSubstr("--prob"));
}

TEST_F(DoctorTest, RefusesEveryWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {"further"},
      {"--device"},
      {"--trace"},
      {"--yes=maybe"},
      {"--trace", (folder / "no/such/folder").string()},
      {"--trace", (folder / "").string()},
      {"--trace", "/dev/null/x"}};
  for (const auto& arguments : wrong) {
    const Examination run = resultOf(*start(arguments));
    EXPECT_EQ(run.status, 2) << arguments.front();
    EXPECT_EQ(run.output, "");
    EXPECT_THAT(run.errors, AnyOf(HasSubstr("--help"), HasSubstr("--trace FILE")));
  }
}

TEST_F(DoctorTest, FindsAnIpodThatNeedsSyncBytes) {
  plugIn({"--serial"});
  const Examination run = examine({"--probe"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("frames with FF (serial): an answer\n"));
  EXPECT_THAT(run.output,
              HasSubstr("IPODCTL_DEVICES=\"IPD1:=serial:" + link.string() + "@57600\"\n"));
}

TEST_F(DoctorTest, ProbesNoIpodThatAnswers) {
  plugIn({});
  EXPECT_THAT(examine({"--probe"}).output, Not(HasSubstr("Other frames")));
}

TEST_F(DoctorTest, EndsAProbeWhenItIsInterrupted) {
  const host_test::PtyPair wire;
  std::filesystem::create_symlink(wire.path(), link);
  auto doctor = start({"--device", link.string(), "--trace", file.string(), "--probe"});
  ASSERT_TRUE(doctor->readUntil("Other frames and speeds"));
  doctor->signal(SIGTERM);
  const Examination run = resultOf(*doctor);
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.output, HasSubstr("ended\n"));
}

/// Sends everything back, as a plug does whose lines touch each other.
class Echo {
 public:
  explicit Echo(int farEnd) : wire(farEnd) {}
  Echo(const Echo&) = delete;
  Echo& operator=(const Echo&) = delete;
  ~Echo() {
    isEnding = true;
    thread.join();
  }

 private:
  void run() const {
    constexpr int kLookAgain = 5;
    while (!isEnding) {
      char some[256];
      const ssize_t count = read(wire, some, sizeof some);
      if (count > 0) EXPECT_EQ(write(wire, some, static_cast<size_t>(count)), count);
      poll(nullptr, 0, kLookAgain);
    }
  }

  int wire;
  std::atomic<bool> isEnding{false};
  std::thread thread{[this] { run(); }};
};

TEST_F(DoctorTest, TakesALineThatSendsBackWhatItReceivesForADeadOne) {
  const host_test::PtyPair wire;
  const Echo echo(wire.descriptor());
  std::filesystem::create_symlink(wire.path(), link);
  EXPECT_THAT(examine({"--probe"}).output, HasSubstr("No iPod answers."));
}

TEST(ProbedLine, GetsItsSettingsBack) {
  const host_test::PtyPair wire;
  termios unusual = wire.settings();
  unusual.c_lflag |= ECHO;
  cfsetspeed(&unusual, B2400);
  wire.changeSettings(unusual);
  {
    ProbedLine line(wire.path());
    line.setSpeed(38400);
    EXPECT_EQ(wire.settings().c_lflag & ECHO, 0u);
    EXPECT_EQ(cfgetospeed(std::make_unique<termios>(wire.settings()).get()), unsigned{B38400});
  }
  const termios after = wire.settings();
  EXPECT_NE(after.c_lflag & ECHO, 0u);
  EXPECT_EQ(cfgetospeed(&after), unsigned{B2400});
}

TEST(ProbedLine, RefusesALineOfAnotherProgram) {
  const host_test::PtyPair wire;
  const ProbedLine first(wire.path());
  EXPECT_THROW(ProbedLine(wire.path()), std::runtime_error);
}

TEST(DeviceMap, FindsADeviceAmongOthers) {
  const host_test::DeviceMapping map("COM1:=/dev/ttyS0, IPD1: = serial:/dev/ttyUSB0@57600 ");
  EXPECT_EQ(mappedDevice("IPD1:"), "serial:/dev/ttyUSB0@57600");
  EXPECT_EQ(mappedDevice("IPD2:"), "");
}

TEST(DeviceMap, KeepsOtherDevicesWhenOneIsMapped) {
  const host_test::DeviceMapping map("COM1:=/dev/ttyS0,IPD1:=/tmp/old");
  mapDevice("IPD1:", "/tmp/new");
  EXPECT_EQ(mappedDevice("IPD1:"), "/tmp/new");
  EXPECT_EQ(mappedDevice("COM1:"), "/dev/ttyS0");
}

}  // namespace
}  // namespace tool
