// The program at a real pseudo-terminal.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "support/hex.h"
#include "support/host_end.h"
#include "support/program.h"
#include "support/temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;

const char* const kAskName = "55 02 00 07 F7";
const char* const kName = "55 06 00 08 5A 6F 65 00 C4";

class ReplayProgram : public testing::Test {
 protected:
  std::string traceOf(const std::string& lines) {
    std::ofstream(folder / "trace") << "# ipodctl-trace 1\n" << lines;
    return (folder / "trace").string();
  }
  std::unique_ptr<Program> run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "replay");
    return std::make_unique<Program>(IAPTRACE_PROGRAM, arguments);
  }
  std::unique_ptr<Program> play(const std::string& lines, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {traceOf(lines), "--link", link.string(), "--speed", "max"});
    auto program = run(more);
    EXPECT_EQ(program->readLine(), "iPod ready on " + link.string()) << program->errors();
    return program;
  }
  std::string refusal(const std::vector<std::string>& arguments, int status) {
    auto program = run(arguments);
    EXPECT_EQ(program->waitForEnd(), status);
    return program->errors();
  }

  TemporaryFolder folder;
  const fs::path link = folder / "ipod";
};

TEST_F(ReplayProgram, PlaysTwoConnections) {
  auto program = play(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
      "# 0.3 IPD1: close\n"
      "# 0.4 IPD1: open ok\n"
      "0.5 IPD1: > 55 02 00 03 FB\n"
      "0.6 IPD1: < 55 03 00 04 00 F9\n"
      "# 0.7 IPD1: close\n");
  HostEnd first(link.string());
  ASSERT_TRUE(first.write(kAskName));
  EXPECT_EQ(first.read(9), kName);
  first.close();
  HostEnd second(link.string());
  ASSERT_TRUE(second.write("55 02 00 03 FB"));
  EXPECT_EQ(second.read(6), "55 03 00 04 00 F9");
  second.close();
  EXPECT_EQ(program->readLine(),
            "2 messages of the iPod and 2 messages of the host as in the trace");
  EXPECT_EQ(program->waitForEnd(), 0);
  EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
}

TEST_F(ReplayProgram, PullsTheCable) {
  auto program = play(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n"
      "# 0.3 IPD1: read-failed 31\n");
  HostEnd host(link.string());
  ASSERT_TRUE(host.write(kAskName));
  EXPECT_EQ(host.read(9), kName);
  EXPECT_TRUE(host.readFails());
  EXPECT_EQ(program->waitForEnd(), 0);
}

TEST_F(ReplayProgram, HasNoTerminalWhileOpeningFailed) {
  auto program = play(
      "# 0.0 IPD1: open failed 2\n"
      "# 0.1 IPD1: open ok\n"
      "# 0.2 IPD1: close\n");
  const auto isTerminal = [&] {
    struct stat status;
    return stat(link.c_str(), &status) == 0 && S_ISCHR(status.st_mode);
  };
  EXPECT_FALSE(isTerminal());
  { std::ifstream attempt(link); }
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!isTerminal() && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  HostEnd host(link.string());
  EXPECT_TRUE(host.isOpen());
  host.close();
  EXPECT_EQ(program->waitForEnd(), 0);
}

TEST_F(ReplayProgram, ReportsTheFirstDifference) {
  auto program = play(
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n",
      {"--strict"});
  HostEnd host(link.string());
  ASSERT_TRUE(host.write("55 02 00 03 FB"));
  EXPECT_EQ(program->waitForEnd(), 1);
  EXPECT_EQ(program->errors(),
            "iaptrace: line 3: the host sent RequestiPodName; now it sent RequestRemoteUIMode\n");
}

TEST_F(ReplayProgram, GivesUpWithoutAHost) {
  auto program = play("# 0.0 IPD1: open ok\n0.1 IPD1: > 55 02 00 07 F7\n", {"--patience", "0.1"});
  EXPECT_EQ(program->waitForEnd(), 1);
  EXPECT_EQ(program->errors(),
            "iaptrace: line 2: waited in vain for this: the host opens the device\n");
}

TEST_F(ReplayProgram, EndsOnSignals) {
  for (int number : {SIGINT, SIGTERM}) {
    auto program = play("# 0.0 IPD1: open ok\n");
    program->signal(number);
    EXPECT_EQ(program->waitForEnd(), 0);
    EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
  }
}

TEST_F(ReplayProgram, PlaysTheHostToAnIpod) {
  Program ipod(IPODSIM_PROGRAM, {"--link", link.string(), "--name", "Zoe"});
  ASSERT_EQ(ipod.readLine(), "iPod ready on " + link.string());
  const std::string lines =
      "# 0.0 IPD1: open ok\n"
      "0.1 IPD1: > 55 02 00 07 F7\n"
      "0.2 IPD1: < 55 06 00 08 5A 6F 65 00 C4\n";
  auto same = run({traceOf(lines), "--as-host", "--link", link.string(), "--speed", "max"});
  EXPECT_EQ(same->readLine(), "1 message sent; the iPod answers as in the trace");
  EXPECT_EQ(same->waitForEnd(), 0) << same->errors();
  const std::string refused =
      "# 0.3 IPD1: close\n# 0.4 IPD1: open ok\n"
      "0.5 IPD1: > 55 02 00 03 FB\n"
      "0.6 IPD1: < 55 04 00 02 04 03 F3\n";
  auto other =
      run({traceOf(lines + refused), "--as-host", "--link", link.string(), "--speed", "max"});
  EXPECT_EQ(other->readLine(),
            "line 7: RequestRemoteUIMode: then iPodAck with status 4; now ReturnRemoteUIMode");
  EXPECT_EQ(other->readLine(), "2 messages sent; 1 difference");
  EXPECT_EQ(other->waitForEnd(), 1);
}

TEST_F(ReplayProgram, RefusesBadInputInOneLine) {
  const std::string trace = traceOf("# 0.0 IPD1: open ok\n# 0.0 IPD2: open ok\n");
  const std::string missing = (folder / "none").string();
  EXPECT_EQ(refusal({trace, "--speed", "fast"}, 2),
            "iaptrace: --speed: write max, or a number from 0.01 to 1000. Try iaptrace replay "
            "--help.\n");
  EXPECT_NE(refusal({trace}, 2).find("several devices"), std::string::npos);
  EXPECT_NE(refusal({missing}, 2).find("cannot be read"), std::string::npos);
  EXPECT_NE(refusal({traceOf("")}, 2).find("There is nothing to play"), std::string::npos);
  EXPECT_NE(refusal({traceOf("# 0.0 IPD1: open ok\n"), "--as-host", "--link", missing}, 1)
                .find("cannot open " + missing),
            std::string::npos);
  std::ofstream(folder / "file") << "mine";
  EXPECT_NE(refusal({traceOf("# 0.0 IPD1: open ok\n"), "--link", (folder / "file").string()}, 1)
                .find("Try iaptrace replay --link PATH"),
            std::string::npos);
}

}  // namespace
}  // namespace simulator
