// Each example with each fault of the simulated iPod and each kind of lost cable, on the
// deterministic platform: it ends within the time that its first comment states. Run alone this
// program prints a table: example and fault, the time until the program ended, its exit status and
// its last sentence. VIRTUAL_ALL=1 tries each fault in each command, and each model.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <iostream>

#include "examples/example_run.h"
#include "support/host_folder.h"
#include "support/last_words.h"
#include "support/misbehaviour.h"
#include "support/replay.h"
#include "support/slice.h"

namespace example_test {
namespace {

using program_run::Group;
using program_run::Misbehaviour;
using std::chrono::seconds;
using virtual_session::isReplay;
using virtual_session::isWanted;
using virtual_session::replayCommand;

constexpr unsigned kCaseSeconds = 60;
constexpr char kNoIpod[] = "No iPod could be connected. Check the cable, then start again.";

struct Example {
  const char* name;
  Main main;
  std::vector<std::string> arguments;
  const char* promise;                ///< in its first comment
  seconds bound;                      ///< of the promise, with these arguments
  std::vector<std::string> failures;  ///< the last sentences of a failure
};

void PrintTo(const Example& example, std::ostream* stream) { *stream << example.name; }

const Example kExamples[] = {
    {"browse_tabs",
     browse_tabs_main,
     {"2"},
     "It ends within 60 s whatever the iPod does.",
     seconds(60),
     {kNoIpod, "The iPod answers too slowly. Plug it in again, then start again.",
      "The iPod does not say what is in a list. Put music on it, then start again.",
      "The iPod gives no usable answer. Plug it in again, then start again."}},
    {"now_playing",
     now_playing_main,
     {"play", "next", "previous", "pause"},
     "It ends within 60 s whatever the iPod does.",
     seconds(60),
     {kNoIpod, "No iPod so far. Check the cable, then start again.",
      "The iPod is lost. Plug it in again, then start again."}},
    {"reconnect",
     reconnect_main,
     {"20"},
     "It ends within SECONDS and 30 s more whatever the iPod does.",
     seconds(50),
     {kNoIpod}},
    {"sample_rate",
     sample_rate_main,
     {"3"},
     "It ends within 30 s, and 12 s more for each track, whatever the iPod does.",
     seconds(66),
     {kNoIpod, "The iPod does not say what plays. Put music on it, or plug it in again."}},
    // The screen of this iPod has 240 rows.
    {"show_logo",
     show_logo_main,
     {HEADUNIT_LOGO},
     "It ends within 30 s, and one second more for each row of the iPod's screen",
     seconds(270),
     {kNoIpod, "The iPod gives no usable answer. Plug it in again, then start again."}},
};

bool triesAll() { return isReplay() || std::getenv("VIRTUAL_ALL") != nullptr; }

std::string lastSentence(const Outcome& outcome) {
  const std::vector<std::string> lines = ownLines(outcome);
  return lines.empty() ? "" : lines.back();
}

void printRow(const std::string& name, const Outcome& outcome) {
  std::cout << std::left << std::setw(56) << name << std::right << std::fixed
            << std::setprecision(1) << std::setw(6)
            << std::chrono::duration<double>(outcome.took).count() << " s  " << outcome.status
            << "  " << lastSentence(outcome) << '\n';
  if (!isReplay()) return;
  for (const std::string& line : outcome.lines)
    std::cout << line << '\n';
}

/// Returns an empty text, or what is wrong with the run of an example with a fault. A failure is a
/// sentence that says what to do, and the exit status 1.
std::string faultOf(const Example& example, const Outcome& outcome) {
  if (!outcome.failure.empty()) return outcome.failure;
  if (outcome.took > example.bound) return "it took longer than it states";
  const std::string sentence = lastSentence(outcome);
  const auto& failures = example.failures;
  const bool hasFailed = std::find(failures.begin(), failures.end(), sentence) != failures.end();
  return outcome.status == (hasFailed ? 1 : 0) ? "" : "the exit status does not fit";
}

class ExampleWithFaults : public testing::TestWithParam<Example> {
 protected:
  ProgramRun runOf(const std::string& model, const Disturb& disturb) const {
    ProgramRun wanted;
    wanted.main = GetParam().main;
    wanted.arguments = GetParam().arguments;
    wanted.model = simulator::personality(model);
    wanted.disturb = disturb;
    return wanted;
  }

  // Returns false when the fault did not happen, because the program has no place for it.
  bool tryOne(const std::string& model, const Misbehaviour& fault) {
    const std::string name = std::string(GetParam().name) + ":" + model + ":" + fault.name;
    if (!isWanted(name)) return false;
    const LastWords words(replayCommand(name));
    alarm(kCaseSeconds);
    const Outcome outcome = run(runOf(model, fault.disturb));
    if (outcome.struck == 0) return false;
    printRow(name, outcome);
    EXPECT_EQ(faultOf(GetParam(), outcome), "") << replayCommand(name);
    if (fault.isSurvivable) EXPECT_EQ(outcome.status, 0) << replayCommand(name);
    return true;
  }

  // Without VIRTUAL_ALL=1, tries one command and one value of a kind of fault.
  void tryGroup(const std::string& model, const Group& group) {
    const std::size_t start = std::hash<std::string>()(model + group.front().name);
    bool hasStruck = false;
    for (std::size_t i = 0; i < group.size() && (triesAll() || !hasStruck); ++i)
      hasStruck = tryOne(model, group[(start + i) % group.size()]) || hasStruck;
    cases += hasStruck ? 1 : 0;
  }

  void tryModel(const std::string& model) {
    const Outcome whole = run(runOf(model, nullptr));
    printRow(GetParam().name + (":" + model), whole);
    ASSERT_EQ(whole.status, 0) << whole.failure;
    const std::vector<Group> groups = program_run::misbehavioursOf(whole);
    for (std::size_t i = 0; i < groups.size(); i += triesAll() ? 1 : kSliceThinning)
      tryGroup(model, groups[i]);
  }

  const session::HostFolder folder;
  int cases = 0;
};

std::string nameOfTest(const testing::TestParamInfo<Example>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(All, ExampleWithFaults, testing::ValuesIn(kExamples), nameOfTest);

TEST_P(ExampleWithFaults, StatesItsLongestTime) {
  const std::string source =
      session::contentOf(std::string(EXAMPLES_SOURCES) + GetParam().name + ".c");
  EXPECT_THAT(source.substr(0, source.find("*/")), testing::HasSubstr(GetParam().promise));
}

TEST_P(ExampleWithFaults, EndsWithinTheStatedTime) {
  tryModel("classic");
  if (triesAll()) {
    for (const std::string& model : simulator::personalityNames())
      tryModel(model);
  }
  EXPECT_GT(cases, isReplay() ? 0 : static_cast<int>(20 / kSliceThinning));
}

TEST_P(ExampleWithFaults, SaysThatThereIsNoIpod) {
  ProgramRun wanted = runOf("classic", nullptr);
  wanted.hasIpod = false;
  const Outcome outcome = run(wanted);
  EXPECT_EQ(lastSentence(outcome), kNoIpod) << outcome.failure;
  EXPECT_EQ(outcome.status, 1);
  EXPECT_LE(outcome.took, GetParam().bound);
}

TEST_P(ExampleWithFaults, EndsWithAnIpodThatNeverAnswers) {
  const Outcome outcome =
      run(runOf("classic", [](simulator::SimulatedIpod& ipod, virtual_platform::VirtualIpod&) {
        ipod.faults().add({simulator::FaultKind::kSilence, {}, 0, 0});
      }));
  EXPECT_EQ(lastSentence(outcome), kNoIpod) << outcome.failure;
  EXPECT_EQ(outcome.status, 1);
  EXPECT_LE(outcome.took, GetParam().bound);
}

}  // namespace
}  // namespace example_test
