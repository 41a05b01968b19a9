#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/program.h"
#include "typed_trace.h"

namespace iaptrace::program_test {
namespace {

using simulator::Program;
using testing::HasSubstr;
using testing::Not;

struct Outcome {
  int status = -1;
  std::string output;
  std::string errors;
};

Outcome run(const std::vector<std::string>& arguments) {
  Program program(IAPTRACE_PROGRAM, arguments);
  Outcome outcome;
  program.endInput();
  while (const auto line = program.readLine())
    outcome.output += *line + "\n";
  outcome.status = program.waitForEnd().value_or(-1);
  outcome.errors = program.errors();
  return outcome;
}

constexpr const char* kSubcommands[] = {"decode", "stats",  "check",      "redact",
                                        "pcapng", "replay", "personality"};

size_t linesIn(const std::string& text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

class IaptraceTest : public testing::Test {
 protected:
  IaptraceTest() {
    char name[] = "/tmp/iaptrace_test_XXXXXX";
    folder = mkdtemp(name);
    file = folder / "a.trace";
    write("0.1 IPD1: > 55 02 00 03 FB\n0.2 IPD1: < 55 03 00 04 00 F9\n");
  }
  ~IaptraceTest() override { std::filesystem::remove_all(folder); }

  void write(const std::string& lines) const { std::ofstream(file) << traceText(lines); }

  std::filesystem::path folder;
  std::filesystem::path file;
};

TEST_F(IaptraceTest, DecodesAFile) {
  const Outcome outcome = run({"decode", file});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output,
            "   0.100000   > General RequestRemoteUIMode\n"
            "   0.200000   < General ReturnRemoteUIMode mode=standard  (100.0 ms)\n");
  EXPECT_EQ(outcome.errors, "");
}

TEST_F(IaptraceTest, DecodesAPartOfTheTime) {
  const std::string request = "   0.100000   > General RequestRemoteUIMode\n";
  const std::string reply =
      "   0.200000   < General ReturnRemoteUIMode mode=standard  (100.0 ms)\n";
  EXPECT_EQ(run({"decode", file, "--from", "0.15"}).output, reply);
  EXPECT_EQ(run({"decode", file, "--to", "0.15"}).output, request);
  EXPECT_EQ(run({"decode", file, "--from", "0.1", "--to", "0.2"}).output, request + reply);
}

TEST_F(IaptraceTest, AsksForTheDeviceOfATraceWithSeveral) {
  write("0.1 IPD1: < 55\n0.1 COM1: < 55\n# 0.1 COM2: open failed 2\n");
  const Outcome outcome = run({"decode", file});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "iaptrace: " + file.string() +
                                " has several devices. Choose one with --device: IPD1:, COM1:.\n");
  EXPECT_EQ(run({"decode", file, "--device", "COM1:"}).status, 0);
  EXPECT_THAT(run({"decode", file, "--device", "COM7:"}).errors, HasSubstr("has no device COM7:"));
}

TEST_F(IaptraceTest, EveryBadInputIsOneLineAndStatus2) {
  const std::string wrong = folder / "wrong";
  std::ofstream(wrong) << "GIF89a\033[2J";
  const std::string empty = folder / "empty";
  std::ofstream{empty};
  const std::string damaged = folder / "damaged";
  std::ofstream(damaged) << traceText("0.1 IPD1: < 5G\n");
  for (const char* subcommand : kSubcommands) {
    for (const std::string& path :
         {wrong, empty, damaged, folder.string(), (folder / "none").string()}) {
      const Outcome outcome = run({subcommand, path});
      EXPECT_EQ(outcome.status, 2) << subcommand << ' ' << path;
      EXPECT_EQ(linesIn(outcome.errors), 1u) << outcome.errors;
      EXPECT_THAT(outcome.errors, Not(HasSubstr("\033")));
      EXPECT_EQ(outcome.output, "");
    }
  }
}

TEST_F(IaptraceTest, EveryWrongUsageIsOneLineAndStatus2) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"frobnicate"},
      {"decode"},
      {"decode", file, file},
      {"decode", file, "--from", "x"},
      {"decode", file, "--frob"},
      {"stats"},
      {"check"},
      {"check", file, file},
      {"check", file, "--frob"},
      {"redact"},
      {"pcapng", "--output"},
      {"replay"},
      {"replay", file, file},
      {"replay", file, "--link"},
      {"replay", file, "--speed", "0"},
      {"replay", file, "--speed", "nan"},
      {"replay", file, "--patience", "0"},
      {"replay", file, "--patience", "1e9"},
      {"replay", file, "--strict", "--as-host"},
      {"personality"},
      {"personality", file, file},
      {"personality", file, "--output", "mine.json"}};
  for (const auto& arguments : wrong) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.status, 2) << outcome.errors;
    EXPECT_EQ(linesIn(outcome.errors), 1u) << outcome.errors;
    EXPECT_THAT(outcome.errors, HasSubstr("--help"));
    EXPECT_EQ(outcome.output, "");
  }
}

TEST_F(IaptraceTest, ExplainsEachSubcommand) {
  const std::string help = run({"--help"}).output;
  for (const char* subcommand : kSubcommands) {
    EXPECT_THAT(help, HasSubstr(std::string("  ") + subcommand));
    const Outcome outcome = run({subcommand, "--help"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr(std::string("Usage: iaptrace ") + subcommand));
  }
  EXPECT_EQ(run({"--version"}).output, "iaptrace " PROJECT_VERSION "\n");
}

TEST_F(IaptraceTest, AFullDiskIsAFailure) {
  const Outcome outcome = run({"redact", file, "-o", "/dev/full"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "iaptrace: /dev/full cannot be written. Name another file.\n");
}

TEST_F(IaptraceTest, SucceedsWhenThePipeIsClosed) {
  std::string lines;
  for (int i = 0; i < 20000; ++i)
    lines += "0.1 IPD1: > 55 02 00 03 FB\n";
  write(lines);
  const std::string command = "bash -c 'set -o pipefail; " IAPTRACE_PROGRAM " decode " +
                              file.string() + " 2>&1 | head -n 1'";
  FILE* const pipe = popen(command.c_str(), "r");
  char line[256] = "";
  while (std::fgets(line, sizeof line, pipe) != nullptr) {
  }
  EXPECT_STREQ(line, "   0.100000 ! > General RequestRemoteUIMode  [no answer]\n");
  EXPECT_EQ(WEXITSTATUS(pclose(pipe)), 0);
}

/// Returns what a terminal receives from `iaptrace decode`.
std::string shownInATerminal(const std::string& environment, const std::string& path) {
  const std::string command = environment +
                              " timeout 60 script --quiet --command '" IAPTRACE_PROGRAM " decode " +
                              path + "' /dev/null </dev/null";
  FILE* const pipe = popen(command.c_str(), "r");
  std::string output;
  char part[256];
  while (std::fgets(part, sizeof part, pipe) != nullptr)
    output += part;
  pclose(pipe);
  return output;
}

TEST_F(IaptraceTest, UsesColourInATerminalOnly) {
  write("0.1 IPD1: < 77\n");
  const std::string line = "   0.100000 ! < bytes outside any frame: 77  [noise]";
  EXPECT_EQ(shownInATerminal("NO_COLOR=", file), "\033[31m" + line + "\033[0m\r\n");
  EXPECT_EQ(shownInATerminal("NO_COLOR=1", file), line + "\r\n");
  EXPECT_EQ(run({"decode", file}).output, line + "\n");
}

TEST_F(IaptraceTest, DrawsATimeline) {
  const std::string svg = folder / "a.svg";
  EXPECT_EQ(run({"stats", file, "--plot", svg}).status, 0);
  std::ifstream content(svg);
  std::string line;
  std::getline(content, line);
  EXPECT_THAT(line, HasSubstr("<svg xmlns=\"http://www.w3.org/2000/svg\""));
}

}  // namespace
}  // namespace iaptrace::program_test
