// The programs that others copy, with each model of iPod and each kind of fault, on the
// deterministic platform. Run alone this program prints a table: model and fault, the time until
// the program ended, its exit status and its last sentence. VIRTUAL_ALL=1 tries each fault in each
// command, in several orders of the threads. Otherwise one command is tried for each kind.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <iostream>

#include "headunit/trial.h"
#include "headunit/verdict.h"
#include "support/host_folder.h"
#include "support/last_words.h"
#include "support/misbehaviour.h"
#include "support/replay.h"
#include "support/slice.h"

namespace headunit_test {
namespace {

using program_run::Group;

using virtual_session::isReplay;
using virtual_session::isWanted;
using virtual_session::replayCommand;

constexpr unsigned kCaseSeconds = 60;
constexpr std::uint64_t kOrdersOfAll = 3;

bool triesAll() { return isReplay() || std::getenv("VIRTUAL_ALL") != nullptr; }

void printRow(const std::string& name, const Outcome& outcome) {
  std::cout << std::left << std::setw(48) << name << std::right << std::fixed
            << std::setprecision(1) << std::setw(6)
            << std::chrono::duration<double>(outcome.took).count() << " s  " << outcome.status
            << "  " << lastSentence(outcome) << '\n';
}

void showReplayedRun(const Outcome& outcome) {
  if (!isReplay()) return;
  for (const std::string& line : outcome.lines)
    std::cout << line << '\n';
  for (const simulator::Traffic& each : outcome.traffic)
    std::cout << describe(each) << '\n';
}

using FindFault = std::string (*)(const Outcome&, const Misbehaviour&, const Outcome&);

class MisbehavingIpod : public testing::TestWithParam<std::string> {
 protected:
  void tryEverything(HostProgram wanted, FindFault check) {
    program = wanted;
    findFault = check;
    whole = run(trialOf(nullptr, 1));
    printRow(GetParam(), whole);
    ASSERT_EQ(whole.status, 0) << whole.failure;
    const std::vector<Group> groups = misbehavioursOf(whole);
    for (std::size_t i = 0; i < groups.size(); i += triesAll() ? 1 : kSliceThinning)
      tryGroup(groups[i]);
    RecordProperty("cases", cases);
    RecordProperty("struck", cases);
  }

 private:
  Trial trialOf(const Disturb& disturb, std::uint64_t seed) const {
    Trial trial;
    trial.program = program;
    trial.model = model;
    trial.disturb = disturb;
    trial.seed = seed;
    return trial;
  }

  // Without VIRTUAL_ALL=1, tries another place of the group for each model.
  void tryGroup(const Group& group) {
    const std::size_t start = std::hash<std::string>()(GetParam() + group.front().name);
    bool struck = false;
    for (std::size_t i = 0; i < group.size() && (triesAll() || !struck); ++i) {
      const Misbehaviour& misbehaviour = group[(start + i) % group.size()];
      for (std::uint64_t seed = 1; seed <= (triesAll() ? kOrdersOfAll : 1); ++seed)
        struck = tryOne(misbehaviour, seed) || struck;
    }
  }

  // Returns false when the fault did not happen, because the program's session has no place for it.
  bool tryOne(const Misbehaviour& misbehaviour, std::uint64_t seed) {
    const std::string name = GetParam() + ":" + misbehaviour.name + ":seed-" + std::to_string(seed);
    if (!isWanted(name)) return false;
    const LastWords words(replayCommand(name));
    alarm(kCaseSeconds);
    const Outcome outcome = run(trialOf(misbehaviour.disturb, seed));
    showReplayedRun(outcome);
    if (outcome.struck == 0) return false;
    printRow(name, outcome);
    EXPECT_EQ(findFault(outcome, misbehaviour, whole), "") << replayCommand(name);
    ++cases;
    return true;
  }

  const session::HostFolder folder;  // without a logo, which only IpodConnect sends
  const simulator::Personality model = simulator::personality(GetParam());
  HostProgram program = HostProgram::kHeadUnit;
  FindFault findFault = nullptr;
  Outcome whole;
  int cases = 0;
};

std::string nameOfTest(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, MisbehavingIpod, testing::ValuesIn(simulator::personalityNames()),
                         nameOfTest);

TEST_P(MisbehavingIpod, IsReportedByTheHeadUnit) {
  tryEverything(HostProgram::kHeadUnit, faultOfHeadUnit);
}

TEST_P(MisbehavingIpod, IsReportedByTheExample) {
  tryEverything(HostProgram::kFirstSession, faultOfExample);
}

}  // namespace
}  // namespace headunit_test
