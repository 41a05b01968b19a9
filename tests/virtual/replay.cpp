#include "virtual/replay.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace virtual_session {
namespace {

constexpr const char* kVariable = "VIRTUAL_CASE";

}  // namespace

bool isReplay() { return std::getenv(kVariable) != nullptr; }

std::string replayedCase() { return isReplay() ? std::getenv(kVariable) : ""; }

bool isWanted(const std::string& name) { return !isReplay() || replayedCase() == name; }

void showReplay(const std::vector<std::string>& trace) {
  if (!isReplay()) return;
  for (const std::string& call : trace)
    std::cout << call << '\n';
}

std::string replayCommand(const std::string& name) {
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  return std::string(kVariable) + "='" + name + "' " + program_invocation_name +
         " --gtest_filter='" + test->test_suite_name() + "." + test->name() + "'";
}

}  // namespace virtual_session
