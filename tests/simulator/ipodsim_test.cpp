#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "support/eventually.h"
#include "support/hex.h"
#include "support/host_end.h"
#include "support/program.h"
#include "support/pty_pair.h"
#include "support/recorded_trace.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

const char* const kAskName = "55 02 00 07 F7";

class IpodsimTest : public testing::Test {
 protected:
  std::unique_ptr<Program> run(std::vector<std::string> arguments) {
    return std::make_unique<Program>(IPODSIM_PROGRAM, arguments);
  }
  std::unique_ptr<Program> runReady(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--link", link.string()});
    auto program = run(arguments);
    EXPECT_EQ(program->readLine(), "iPod ready on " + link.string()) << program->errors();
    return program;
  }
  // Returns the errors of a refused command line, and checks the exit status.
  std::string refusal(const std::vector<std::string>& arguments, int status) {
    auto program = run(arguments);
    const std::optional<int> ended = program->waitForEnd();
    EXPECT_EQ(ended, status);
    return ended ? program->errors() : "it runs";
  }

  TemporaryFolder folder;
  const fs::path link = folder / "ipod";
};

TEST_F(IpodsimTest, AnswersAndEndsOnSignals) {
  for (int number : {SIGINT, SIGTERM}) {
    auto program = runReady({"--name", "Zoe"});
    HostEnd host(link.string());
    ASSERT_TRUE(host.write(kAskName));
    EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
    program->signal(number);
    EXPECT_EQ(program->waitForEnd(), 0);
    EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  }
}

TEST_F(IpodsimTest, SpeaksSerialFrames) {
  auto program = runReady({"--serial", "--name", "Zoe"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("FF 55 02 00 07 F7"));
  EXPECT_EQ(host.read(10), "FF 55 06 00 08 5A 6F 65 00 C4");
}

TEST_F(IpodsimTest, CommandLineSelectsTheModelAndItsSwitches) {
  auto program =
      runReady({"--personality", "nano", "--ext-version", "1.11", "--image-limits", "120x65",
                "--set", "unknown-command=silence", "--fault", "doubled@00:0F"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 77 87"));
  ASSERT_TRUE(host.write("55 03 04 00 39 C0"));
  EXPECT_EQ(host.read(16), "55 0D 04 00 3A 00 78 00 41 02 00 78 00 41 03 3E");
  ASSERT_TRUE(host.write("55 03 00 0F 04 EA"));
  EXPECT_EQ(host.read(16), "55 05 00 10 04 01 0B DB 55 05 00 10 04 01 0B DB");
}

TEST_F(IpodsimTest, TakesAModelFromAFile) {
  std::ofstream(folder / "mine.json") << R"({"name": "Zoe", "lingoes": {"04": "1.11"}})";
  auto program = runReady({"--personality", (folder / "mine.json").string()});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
  ASSERT_TRUE(host.write("55 03 00 0F 04 EA"));
  EXPECT_EQ(host.read(8), "55 05 00 10 04 01 0B DB");
}

TEST_F(IpodsimTest, RefusesAModelThatAFileGetsWrong) {
  std::ofstream(folder / "mine.json") << R"({"musik": "x"})";
  EXPECT_EQ(refusal({"--personality", (folder / "mine.json").string()}, 2),
            "ipodsim: " + (folder / "mine.json").string() +
                ": \"musik\" is not a key of such a file; see ipodsim --help-personalities\n");
}

TEST_F(IpodsimTest, TraceShowsEveryMessage) {
  auto program = runReady({"--trace"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_TRUE(program->readUntil(" <- 00 03 RequestRemoteUIMode"));
  EXPECT_TRUE(program->readUntil(" -> 00 04 ReturnRemoteUIMode mode=standard"));
  host.close();
  EXPECT_TRUE(program->readUntil(" -- the accessory closed the link"));
}

TEST_F(IpodsimTest, TraceShowsBytesThatAreNotAMessage) {
  auto program = runReady({"--trace"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("13 A9 55 02 00 03 FC"));
  EXPECT_TRUE(program->readUntil(" -- bytes that form no frame: 13 A9"));
  EXPECT_TRUE(program->readUntil(" -- a frame with a wrong checksum: 55 02 00 03 FC"));
  ASSERT_TRUE(host.write("55 02"));
  host.close();
  EXPECT_TRUE(program->readUntil(" -- a frame that was not finished: 55 02"));
}

TEST_F(IpodsimTest, WithoutATraceOnlyDamageIsShown) {
  auto program = runReady({});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("13 A9 55 02 00 03 FC 55 02 00 03 FB"));
  const std::string line = program->readLine().value_or("");
  EXPECT_NE(line.find(" -- a frame with a wrong checksum: 55 02 00 03 FC"), std::string::npos)
      << line;
  EXPECT_EQ(host.read(6), "55 03 00 04 00 F9");
  host.close();
  EXPECT_NE(program->readLine().value_or("").find(" -- the accessory closed"), std::string::npos);
}

/// Returns the line that reports a fault, without its time: "fault: lost@00:07#1 ... (Name)".
std::string strikeOf(Program& program) {
  const std::string line = program.readLine().value_or("");
  const size_t time = line.find(" struck at ");
  const size_t request = line.find(" s (");
  if (time == std::string::npos || request == std::string::npos) return line;
  return line.substr(0, time) + " ..." + line.substr(request + 2);
}

TEST_F(IpodsimTest, ReportsFaultsInTheFormOfTheOption) {
  const char* const ask = "55 02 00 03 FB";
  const char* const twice = "55 03 00 04 00 F9 55 03 00 04 00 F9";
  {
    auto program = runReady({"--fault", "doubled@00:*#2+"});
    HostEnd host(link.string());
    ASSERT_TRUE(host.write(ask));
    EXPECT_EQ(host.read(6), "55 03 00 04 00 F9");
    ASSERT_TRUE(host.write(ask));
    EXPECT_EQ(host.read(12), twice);
    EXPECT_EQ(strikeOf(*program), "fault: doubled@00:03#2 ... (RequestRemoteUIMode)");
  }
  auto program = runReady({"--fault", "doubled@00:03#2"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(ask));
  ASSERT_TRUE(host.write(ask));
  EXPECT_EQ(host.read(18), std::string("55 03 00 04 00 F9 ") + twice);
  EXPECT_EQ(strikeOf(*program), "fault: doubled@00:03#2 ... (RequestRemoteUIMode)");
}

TEST_F(IpodsimTest, ReportsRandomFaults) {
  auto program = runReady({"--fault", "random=100/lost"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_EQ(strikeOf(*program), "fault: lost@00:03#1 ... (RequestRemoteUIMode)");
}

TEST_F(IpodsimTest, QuietDoesNotReportFaults) {
  auto program = runReady({"--quiet", "--interactive", "--fault", "doubled"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("13 55 02 00 03 FC 55 02 00 03 FB"));
  EXPECT_EQ(host.read(12), "55 03 00 04 00 F9 55 03 00 04 00 F9");
  program->type("status");
  EXPECT_EQ(program->readLine(), "plugged in");
}

TEST_F(IpodsimTest, WritesTheScreenWhenAnImageWasUploaded) {
  const fs::path screen = folder / "screen.png";
  auto program = runReady({"--screen", screen.string()});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 10 04 00 32 00 00 02 00 01 00 01 00 00 00 02 00 F8 BC"));
  EXPECT_EQ(host.read(9), "55 06 04 00 01 00 00 32 C3");
  EXPECT_TRUE(program->readUntil("screen written to " + screen.string()));
  std::ifstream file(screen, std::ios::binary);
  char signature[4] = {};
  file.read(signature, sizeof signature);
  EXPECT_EQ(std::string(signature, 4), "\x89PNG");
}

TEST_F(IpodsimTest, ScreenFileFollowsTheScreenWithoutALine) {
  const fs::path screen = folder / "screen.png";
  auto program = runReady({"--screen", screen.string(), "--interactive"});
  program->type("play");
  EXPECT_TRUE(session::eventually([&] { return fs::exists(screen); }));
  program->type("pause");
  program->type("status");
  EXPECT_EQ(program->readLine(), "plugged in") << "no line for it";
  const auto first = fs::last_write_time(screen);
  program->type("next");
  EXPECT_TRUE(session::eventually([&] { return fs::last_write_time(screen) != first; }));
}

TEST_F(IpodsimTest, ScreenFileIsWrittenAtMostFourTimesASecond) {
  const fs::path screen = folder / "screen.png";
  auto program = runReady({"--screen", screen.string(), "--interactive", "--quiet"});
  const auto begin = std::chrono::steady_clock::now();
  std::set<fs::file_time_type> times;
  while (std::chrono::steady_clock::now() < begin + milliseconds(900)) {
    program->type(times.size() % 2 == 0 ? "play" : "pause");
    program->type("next");
    std::this_thread::sleep_for(milliseconds(5));
    if (fs::exists(screen)) times.insert(fs::last_write_time(screen));
  }
  EXPECT_GE(times.size(), 1u);
  EXPECT_LE(times.size(), 4u);
}

TEST_F(IpodsimTest, MissingFontIsReportedOnceAndTheScreenIsWritten) {
  const fs::path screen = folder / "screen.png";
  auto program = runReady(
      {"--screen", screen.string(), "--font", (folder / "none.ttf").string(), "--interactive"});
  program->type("play");
  EXPECT_TRUE(session::eventually([&] { return fs::exists(screen); }));
  EXPECT_EQ(program->errors(),
            "ipodsim: the screen has no texts, because no font can be read; install "
            "fonts-dejavu-core, or name a font with --font FILE.ttf\n");
}

TEST_F(IpodsimTest, ScreenThatCannotBeWrittenLaterIsReportedOnce) {
  fs::create_directory(folder / "gone");
  auto program = runReady({"--screen", (folder / "gone" / "screen.png").string(), "--interactive"});
  fs::remove(folder / "gone");
  program->type("play");
  std::string errors;
  EXPECT_TRUE(session::eventually([&] {
    errors += program->errors();
    return errors.find('\n') != std::string::npos;
  }));
  std::this_thread::sleep_for(milliseconds(1100));
  errors += program->errors();
  EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
  EXPECT_EQ(errors.rfind("ipodsim: cannot write ", 0), 0u) << errors;
}

TEST_F(IpodsimTest, PlaysAMusicLibraryOfTheUsers) {
  const fs::path file = folder / "library.json";
  std::ofstream(file) << R"({"name": "Mine", "tracks": [{"title": "One"}]})";
  auto program = runReady({"--library", file.string(), "--tracks", "3"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(10), "55 07 00 08 4D 69 6E 65 00 68");
  ASSERT_TRUE(host.write("55 02 00 05 F9"));
  EXPECT_EQ(host.read(7), "55 04 00 02 00 05 F5");
  ASSERT_TRUE(host.write("55 04 04 00 18 05 DB"));
  EXPECT_EQ(host.read(10), "55 07 04 00 19 00 00 00 03 D9");
}

TEST_F(IpodsimTest, CommandsUnplugAndPlug) {
  auto program = runReady({"--interactive", "--quiet", "--name", "Zoe"});
  HostEnd host(link.string());
  program->type("unplug");
  EXPECT_EQ(program->readLine(), "unplugged");
  EXPECT_TRUE(host.readFails());
  EXPECT_FALSE(HostEnd(link.string()).isOpen());
  program->type("plug");
  EXPECT_EQ(program->readLine(), "plugged in on " + link.string());
  HostEnd again(link.string());
  ASSERT_TRUE(again.write(kAskName));
  EXPECT_EQ(again.read(9), "55 06 00 08 5A 6F 65 00 C4");
}

TEST_F(IpodsimTest, RecordsTheWireAsTheAccessorySeesIt) {
  const std::string file = (folder / "car.trace").string();
  auto program = runReady({"--interactive", "--name", "Zoe", "--record", file});
  {
    HostEnd host(link.string());
    ASSERT_TRUE(host.write(kAskName));
    EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
  }
  EXPECT_TRUE(program->readUntil(" -- the accessory closed the link"));
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_EQ(host.read(6), "55 03 00 04 00 F9");
  program->type("unplug");
  EXPECT_TRUE(program->readUntil("unplugged"));
  program->type("plug");
  program->type("quit");
  EXPECT_EQ(program->waitForEnd(), 0);
  EXPECT_EQ(recorded::textsOf(file),
            (recorded::Lines{"# IPD1: the iPod is plugged in", "# IPD1: open ok",
                             "IPD1: > 55 02 00 07 F7", "IPD1: < 55 06 00 08 5A 6F 65 00 C4",
                             "# IPD1: close", "# IPD1: open ok", "IPD1: > 55 02 00 03 FB",
                             "IPD1: < 55 03 00 04 00 F9", "# IPD1: the cable is pulled",
                             "# IPD1: read-failed 31", "# IPD1: the iPod is plugged in",
                             "# IPD1: the cable is pulled"}));
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(IpodsimTest, RecordsASerialLineUnderItsName) {
  const std::string file = (folder / "car.trace").string();
  auto program = runReady({"--serial", "--interactive", "--quiet", "--record", file});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("FF 55 02 00 03 FB"));
  EXPECT_EQ(host.read(7), "FF 55 03 00 04 00 F9");
  program->type("quit");
  EXPECT_EQ(program->waitForEnd(), 0);
  const recorded::Lines lines = recorded::textsOf(file);
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[2], "COM1: > FF 55 02 00 03 FB");
  EXPECT_EQ(lines[3], "COM1: < FF 55 03 00 04 00 F9");
}

TEST_F(IpodsimTest, RunsWithoutARecordWhoseFileCannotBeWritten) {
  const fs::path file = folder / "precious";
  std::ofstream(file) << "precious";
  auto program = runReady({"--name", "Zoe", "--record", file.string()});
  EXPECT_EQ(program->errors(), "ipodsim: cannot record to " + file.string() +
                                   ": it is there and is not a trace; name another file, or "
                                   "remove it\n");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
  EXPECT_EQ(fs::file_size(file), 8u);
}

TEST_F(IpodsimTest, ListensAtATcpPort) {
  auto program = run({"--listen", "0", "--name", "Zoe"});
  const std::string line = program->readLine().value_or("");
  ASSERT_EQ(line.rfind("iPod ready on 127.0.0.1:", 0), 0u) << line << program->errors();
  HostEnd host = HostEnd::connectedTo(line.substr(std::string("iPod ready on ").size()));
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
}

TEST_F(IpodsimTest, UsesASerialPort) {
  host_test::PtyPair wire;
  auto program = run({"--device", wire.path(), "--baud", "115200", "--serial", "--name", "Zoe"});
  EXPECT_EQ(program->readLine(), "iPod ready on " + wire.path());
  EXPECT_TRUE(wire.send({0xFF, 0x55, 0x02, 0x00, 0x07, 0xF7}));
  EXPECT_EQ(wire.receive(10), (Bytes{0xFF, 0x55, 0x06, 0x00, 0x08, 0x5A, 0x6F, 0x65, 0x00, 0xC4}));
  const termios settings = wire.settings();
  EXPECT_EQ(cfgetospeed(&settings), speed_t{B115200});
}

TEST_F(IpodsimTest, WrongPlacesAreExplained) {
  EXPECT_EQ(refusal({"--listen", "x"}, 2),
            "ipodsim: --listen x: write a port like 5000, or an address and a port like "
            "192.168.1.5:5000\n");
  for (const char* const text : {"127.0.0.1:", ":5000", "65536", "5000x"})
    EXPECT_NE(refusal({"--listen", text}, 2).find("write a port like 5000"), std::string::npos);
  EXPECT_NE(refusal({"--listen", "192.0.2.1:5000"}, 1).find("cannot listen on 192.0.2.1:5000"),
            std::string::npos);
  EXPECT_EQ(refusal({"--device", "/dev/null"}, 1),
            "ipodsim: cannot use /dev/null: it is not a terminal; name a serial port, like "
            "/dev/ttyUSB0\n");
  EXPECT_EQ(refusal({"--device", "/dev/null", "--baud", "1"}, 2),
            "ipodsim: --baud 1: choose one of 300 1200 2400 4800 9600 19200 38400 57600 115200 "
            "230400 460800 921600\n");
  EXPECT_NE(refusal({"--baud", "9600"}, 2).find("--device"), std::string::npos);
  EXPECT_NE(refusal({"--listen", "5000", "--device", "/dev/null"}, 2).find("excludes"),
            std::string::npos);
}

TEST_F(IpodsimTest, CommandsPlayAndShowTheStatus) {
  auto program = runReady({"--interactive", "--quiet"});
  program->type("status");
  EXPECT_EQ(program->readLine(), "plugged in");
  EXPECT_EQ(program->readLine(), "stopped");
  EXPECT_EQ(program->readLine(), "0 messages received, 0 sent, 0 faults");
  program->type("play");
  program->type("next");
  program->type("previous");
  program->type("pause");
  program->type("status");
  program->readLine();
  EXPECT_EQ(program->readLine()->rfind("paused: ", 0), 0u);
  program->readLine();
}

TEST_F(IpodsimTest, CommandsAnnounceASampleRateAndAddFaults) {
  auto program = runReady({"--interactive", "--quiet"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_EQ(host.read(6), "55 03 00 04 00 F9");
  program->type("rate 48000");
  EXPECT_EQ(host.read(17), "55 0E 0A 04 00 00 BB 80 00 00 00 00 00 00 00 00 A9");
  program->type("fault doubled@00:03");
  program->type("status");
  program->readUntil("messages");
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_EQ(host.read(12), "55 03 00 04 00 F9 55 03 00 04 00 F9");
  program->type("clear");
  program->type("status");
  EXPECT_TRUE(program->readUntil("2 messages received, 4 sent, 1 faults"));
}

TEST_F(IpodsimTest, WrongCommandsAreExplained) {
  auto program = runReady({"--interactive", "--quiet"});
  program->type("");
  program->type("dance");
  EXPECT_EQ(program->readLine(), "there is no command 'dance'; try help");
  program->type("rate fast");
  EXPECT_EQ(program->readLine(), "write a rate in Hz, like: rate 48000");
  program->type("fault what");
  EXPECT_EQ(program->readLine(), "fault 'what': there is no fault 'what'");
  program->type("help");
  EXPECT_TRUE(program->readUntil("  unplug "));
  EXPECT_TRUE(program->readUntil("  quit "));
}

TEST_F(IpodsimTest, QuitOrTheEndOfInputEndsIt) {
  auto first = runReady({"--interactive"});
  first->type("quit");
  EXPECT_EQ(first->waitForEnd(), 0);
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  auto second = runReady({"--interactive"});
  second->endInput();
  EXPECT_EQ(second->waitForEnd(), 0);
}

TEST_F(IpodsimTest, HelpExplainsItself) {
  for (const char* option : {"--help", "--help-control", "--help-faults", "--help-personalities"}) {
    auto program = run({option});
    EXPECT_TRUE(program->readUntil("--")) << option;
    EXPECT_EQ(program->waitForEnd(), 0) << option;
    EXPECT_EQ(program->errors(), "");
  }
}

/// A terminal of 80 columns breaks longer lines inside words.
TEST_F(IpodsimTest, HelpFitsATerminal) {
  for (const char* option : {"--help", "--help-control", "--help-faults", "--help-personalities"}) {
    auto program = run({option});
    for (auto line = program->readLine(); line; line = program->readLine())
      EXPECT_LE(line->size(), 80u) << *line;
  }
}

TEST_F(IpodsimTest, PrintsItsVersion) {
  auto program = run({"--version"});
  EXPECT_EQ(program->readLine(), "ipodsim " PROJECT_VERSION);
  EXPECT_EQ(program->waitForEnd(), 0);
  EXPECT_EQ(program->restOfOutput() + program->errors(), "");
}

TEST_F(IpodsimTest, PrintsTheNumbersOfTheUsersMusicAfterTheFirstLine) {
  const fs::path file = folder / "library.json";
  std::ofstream(file) << R"({"tracks": [{"title": "One", "artist": "Anna"}, {"title": "Two"}]})";
  auto program = runReady({"--library", file.string(), "--tracks", "5"});
  EXPECT_EQ(program->readLine(), "music: 2 tracks, 1 artist, 0 albums, 0 playlists");
}

TEST_F(IpodsimTest, PrintsTheNumbersOfAFolderAndItsSkippedFiles) {
  const fs::path music = folder / "Music";
  fs::create_directory(music);
  std::ofstream(music / "broken.mp3") << "x";
  std::ofstream(music / "road.m3u") << "broken.mp3\n";
  {
    auto program = runReady({"--music", music.string()});
    EXPECT_EQ(program->readLine(),
              "music: 0 tracks, 0 artists, 0 albums, 1 playlist; 1 file skipped: "
              "no playable audio found in it (1)");
  }
  auto quiet = runReady({"--music", music.string(), "--quiet", "--interactive"});
  quiet->type("status");
  EXPECT_EQ(quiet->readLine(), "plugged in") << "no count";
}

TEST_F(IpodsimTest, PrintsNoNumbersOfTheBuiltInMusic) {
  auto program = runReady({"--interactive"});
  program->type("status");
  EXPECT_EQ(program->readLine(), "plugged in");
}

TEST_F(IpodsimTest, ScreenThatCannotBeWrittenIsReportedAtTheStart) {
  const std::string hint = "\nTry ipodsim --screen FILE.png with a file that can be written.\n";
  const std::string none = (folder / "none").string();
  EXPECT_EQ(refusal({"--screen", none + "/screen.png"}, 1),
            "ipodsim: cannot write " + none + "/screen.png: there is no folder " + none + hint);
  const std::string there = (folder / ".").string();
  EXPECT_EQ(refusal({"--screen", there}, 1),
            "ipodsim: cannot write " + there + ": it is a folder" + hint);
  EXPECT_EQ(refusal({"--screen", "/proc/screen.png"}, 1),
            "ipodsim: cannot write /proc/screen.png: No such file or directory" + hint);
}

TEST_F(IpodsimTest, ScreenThatCanBeWrittenIsNotTouchedAtTheStart) {
  const fs::path screen = folder / "screen.png";
  {
    auto program = runReady({"--screen", screen.string()});
    EXPECT_FALSE(fs::exists(screen));
    EXPECT_FALSE(fs::exists(folder / "screen.png.part"));
  }
  std::ofstream(screen) << "old";
  auto program = runReady({"--screen", screen.string()});
  EXPECT_EQ(fs::file_size(screen), 3u);
}

TEST_F(IpodsimTest, WrongCommandLinesAreExplained) {
  EXPECT_EQ(refusal({"--personality", "x"}, 2),
            "ipodsim: there is no personality 'x'; choose one of classic nano video mini touch "
            "strict hasty\n");
  EXPECT_EQ(refusal({"--ext-version", "1"}, 2), "ipodsim: --ext-version 1: write it like 1.14\n");
  EXPECT_EQ(refusal({"--ext-version", "1.256"}, 2),
            "ipodsim: --ext-version 1.256: write it like 1.14\n");
  EXPECT_EQ(refusal({"--image-limits", "1x"}, 2),
            "ipodsim: --image-limits 1x: write them like 320x240\n");
  EXPECT_EQ(refusal({"--fault", "x"}, 2),
            "ipodsim: fault 'x': there is no fault 'x'\nTry ipodsim --help-faults.\n");
  EXPECT_EQ(refusal({"--set", "x=1"}, 2),
            "ipodsim: setting 'x=1': there is no switch 'x'\nTry ipodsim --help-personalities.\n");
  EXPECT_NE(refusal({"--what"}, 2).find("Try ipodsim --help."), std::string::npos);
  EXPECT_NE(refusal({"--music", "/tmp", "--library", "x"}, 2).find("excludes"), std::string::npos);
}

TEST_F(IpodsimTest, FailuresToStartAreExplained) {
  const std::string none = (folder / "none").string();
  EXPECT_NE(refusal({"--music", none}, 1).find(none), std::string::npos);
  EXPECT_NE(refusal({"--library", none}, 1).find(none), std::string::npos);
  const fs::path file = folder / "broken.json";
  std::ofstream(file) << "{\"tracks\": [{\"title\": 3}]}";
  const std::string broken = refusal({"--library", file.string()}, 1);
  EXPECT_NE(broken.find("tracks[0].title"), std::string::npos) << broken;
  EXPECT_EQ(refusal({"--link", file.string()}, 1),
            "ipodsim: cannot make the link " + file.string() +
                ": there is a file of this name; use another link\nTry ipodsim --link PATH.\n");
  EXPECT_EQ(refusal({"--link", none + "/ipod"}, 1),
            "ipodsim: cannot make the link " + none +
                "/ipod: No such file or directory; make its folder, or use another link\n"
                "Try ipodsim --link PATH.\n");
}

TEST_F(IpodsimTest, LinkOfARunningIpodsimIsKept) {
  auto first = runReady({"--name", "Zoe"});
  EXPECT_EQ(refusal({"--link", link.string()}, 1),
            "ipodsim: the link " + link.string() +
                " is in use by another simulated iPod, process " +
                std::to_string(first->process()) +
                "; end that one, or use another link\nTry ipodsim --link PATH.\n");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
  first->signal(SIGTERM);
  EXPECT_EQ(first->waitForEnd(), 0);
  auto second = runReady({});
}

TEST_F(IpodsimTest, LinkOfAKilledIpodsimIsReplaced) {
  for (int round = 0; round < 3; ++round) {
    auto program = runReady({"--name", "Zoe"});
    HostEnd host(link.string());
    ASSERT_TRUE(host.write(kAskName));
    EXPECT_EQ(host.read(9), "55 06 00 08 5A 6F 65 00 C4");
    program->signal(SIGKILL);
    EXPECT_EQ(program->waitForEnd(), std::nullopt);
    EXPECT_TRUE(fs::is_symlink(link));
  }
}

TEST_F(IpodsimTest, OneOfManyConcurrentStartsGetsTheLink) {
  std::vector<std::unique_ptr<Program>> programs;
  for (int i = 0; i < 8; ++i)
    programs.push_back(run({"--quiet", "--link", link.string()}));
  int ready = 0;
  for (const auto& program : programs) {
    if (program->readLine() == "iPod ready on " + link.string()) {
      ++ready;
    } else {
      EXPECT_EQ(program->waitForEnd(), 1);
      EXPECT_NE(program->errors().find("is in use by another simulated iPod"), std::string::npos);
    }
  }
  EXPECT_EQ(ready, 1);
  EXPECT_TRUE(HostEnd(link.string()).isOpen());
}

TEST_F(IpodsimTest, LinkIsKeptWhileTheCableIsPulled) {
  auto program = runReady({"--interactive", "--quiet"});
  program->type("unplug");
  EXPECT_EQ(program->readLine(), "unplugged");
  refusal({"--link", link.string()}, 1);
  std::ofstream(link) << "precious";
  program->type("plug");
  EXPECT_EQ(program->readLine(), "cannot make the link " + link.string() +
                                     ": there is a file of this name; use another link");
  fs::remove(link);
  program->type("plug");
  EXPECT_EQ(program->readLine(), "plugged in on " + link.string());
}

}  // namespace
}  // namespace simulator
