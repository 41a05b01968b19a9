// The program, as a person runs it: its exit status, and what it says about wrong usage.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/program.h"

namespace {

using ::testing::HasSubstr;

struct Ended {
  int status = -1;
  std::string output;
  std::string errors;
};

Ended check(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "check");
  simulator::Program program(IAPTRACE_PROGRAM, arguments);
  program.endInput();
  Ended run;
  while (const auto line = program.readLine())
    run.output += *line + "\n";
  run.status = program.waitForEnd().value_or(-1);
  run.errors = program.errors();
  return run;
}

std::string recorded(const std::string& name) {
  return std::string(TRACES_FOLDER) + "/" + name + ".trace";
}

TEST(CheckCommand, EndsWith0WithoutAFault) {
  const Ended run = check({recorded("classic-with-a-patient-host")});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output, HasSubstr("no fault found, 1 connection"));
}

TEST(CheckCommand, EndsWith1ForAFaultAndForUnknown) {
  EXPECT_EQ(check({recorded("ipod-does-not-answer")}).status, 1);
  EXPECT_EQ(check({recorded("one-count-lost")}).status, 1);
}

TEST(CheckCommand, EndsWith2AndOneLineForWrongUsage) {
  const std::vector<std::vector<std::string>> wrong{
      {}, {"--nonsense"}, {"a", "b"}, {"/dev/null"}, {"/nowhere/at-all.trace"}, {"-"}};
  for (const std::vector<std::string>& arguments : wrong) {
    const Ended run = check(arguments);
    EXPECT_EQ(run.status, 2) << ::testing::PrintToString(arguments);
    EXPECT_EQ(run.errors.find('\n'), run.errors.size() - 1) << run.errors;
  }
}

TEST(CheckCommand, PrintsTheCauses) {
  const Ended run = check({"--help-causes"});
  EXPECT_EQ(run.status, 0);
  EXPECT_THAT(run.output, HasSubstr("mode-change-pending\n"));
}

}  // namespace
