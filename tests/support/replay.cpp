#include "support/replay.h"

#include <errno.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace virtual_session {
namespace {

constexpr const char* kVariable = "VIRTUAL_CASE";

bool isFound = false;

class ReplayFindsItsCase : public testing::Environment {
 public:
  void TearDown() override { EXPECT_TRUE(!isReplay() || isFound) << "no case " << replayedCase(); }
};

[[maybe_unused]] testing::Environment* const replayFindsItsCase =
    testing::AddGlobalTestEnvironment(new ReplayFindsItsCase);

/// "VIRTUAL_ALL='1' " when that is set.
std::string settingOf(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr ? std::string(variable) + "='" + value + "' " : "";
}

}  // namespace

bool isReplay() { return std::getenv(kVariable) != nullptr; }

std::string replayedCase() { return isReplay() ? std::getenv(kVariable) : ""; }

bool isWanted(const std::string& name) {
  if (!isReplay()) return true;
  const bool wanted = replayedCase() == name;
  isFound = isFound || wanted;
  return wanted;
}

void showReplay(const std::vector<std::string>& trace) {
  if (!isReplay()) return;
  for (const std::string& call : trace)
    std::cout << call << '\n';
}

std::string replayCommand(const std::string& name) {
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  return settingOf("VIRTUAL_ALL") + settingOf("VIRTUAL_SEEDS") + kVariable + "='" + name + "' " +
         program_invocation_name + " --gtest_filter='" + test->test_suite_name() + "." +
         test->name() + "'";
}

}  // namespace virtual_session
