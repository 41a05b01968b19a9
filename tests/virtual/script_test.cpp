// The sessions that the sweeps disturb, here undisturbed, and the promises of every export.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

#include "support/counted_heap.h"
#include "support/host_folder.h"
#include "virtual/failures.h"
#include "virtual/sweep.h"

namespace virtual_session {
namespace {

using std::chrono::microseconds;
using testing::ElementsAreArray;
using virtual_platform::Direction;
using virtual_platform::Failures;
using virtual_platform::failuresOf;

using Names = std::set<std::string>;

/// Returns the names that the library exports.
Names exportsOfTheLibrary() {
  const std::regex line("\\s+(\\w+) @\\d+");
  std::ifstream definition(EXPORTS);
  Names names;
  std::smatch match;
  for (std::string text; std::getline(definition, text);) {
    if (std::regex_match(text, match, line)) names.insert(match[1]);
  }
  return names;
}

Names exportsOf(const Calls& calls) {
  Names names;
  for (const Call& call : calls)
    names.insert(exportOf(call.name));
  return names;
}

Calls callsOf(const Script& script) {
  VirtualSession session(1, script);
  Calls calls;
  EXPECT_EQ(session.run([&] { calls = session.play(); }), "");
  return calls;
}

class ScriptTest : public testing::TestWithParam<const char*> {
 protected:
  ScriptTest() { warmUp(script); }

  static void report(const char* what, std::size_t count) {
    RecordProperty(what, static_cast<int>(count));
  }

  const session::HostFolder folder;
  const Script& script = scriptCalled(GetParam());
};

INSTANTIATE_TEST_SUITE_P(All, ScriptTest, testing::ValuesIn(kScripts));

TEST_P(ScriptTest, HasTheSameResultsInEveryOrderOfTheThreads) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    const OpenThings before = openThings();
    {
      VirtualSession session(seed, script);
      Calls calls;
      ASSERT_EQ(session.run([&] { calls = session.play(); }), "") << seed;
      ASSERT_THAT(resultsOf(calls), ElementsAreArray(script.results)) << seed;
      ASSERT_EQ(findFault(calls, script.promises), "") << seed;
    }
    ASSERT_EQ(openThings(), before) << seed;
  }
}

// The sweeps repeat the script very often.
TEST_P(ScriptTest, IsSmall) {
  Failures& allocations = failuresOf("allocation");
  const std::size_t before = allocations.asked();
  session::setRefusal([] { return failuresOf("allocation").strikesNext(); });
  VirtualSession session(1, script);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(session.run([&] { session.play(); }), "");
  const Time took = std::chrono::steady_clock::now() - start;
  session::setRefusal(nullptr);
  const std::size_t bytes = session.cable.passed(Direction::kFromIpod);
  EXPECT_LT(bytes, 4096u);
  report("bytes_from_ipod", bytes);
  report("bytes_to_ipod", session.cable.passed(Direction::kToIpod));
  report("frames_from_ipod", session.ipod.counters().messagesSent);
  report("frames_to_ipod", session.ipod.counters().messagesReceived);
  report("platform_calls", session.world.trace().size());
  report("allocations", allocations.asked() - before);
  report("microseconds", static_cast<std::size_t>(took / microseconds(1)));
}

class Reference : public testing::Test {
 protected:
  const session::HostFolder folder;
};

TEST_F(Reference, CallsEveryExport) {
  const Names all = exportsOfTheLibrary();
  EXPECT_EQ(all.size(), 35u);
  EXPECT_EQ(exportsOf(callsOf(referenceScript())), all);
}

TEST_F(Reference, SendsEveryCommand) {
  const Calls calls = callsOf(referenceScript());
  for (int code = 1; code <= 14; ++code) {
    const std::string name = "IpodCommand(" + std::to_string(code) + ")";
    EXPECT_TRUE(std::any_of(calls.begin(), calls.end(), [&](const Call& call) {
      return call.name == name;
    })) << name;
  }
}

TEST_F(Reference, ShowsTheLogo) {
  VirtualSession session(1, referenceScript());
  bool shown = false;
  session.ipod.setImageHook([&](const simulator::Picture& picture) {
    shown = picture.width == 4 && picture.height == kLogoPackets;
  });
  EXPECT_EQ(session.run([&] { session.play(); }), "");
  EXPECT_TRUE(shown);
}

TEST(Promises, CoverEveryExport) {
  LongestTimes longest;
  for (const Promise& promise : exportPromises()) {
    Time& known = longest[exportOf(promise.name)];
    known = std::max<Time>(known, promise.longest);
  }
  Names names;
  for (const auto& [name, time] : longest) {
    names.insert(name);
    const auto bound = std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
    RecordProperty("bound_ms_" + name, static_cast<int>(bound));
  }
  EXPECT_EQ(names, exportsOfTheLibrary());
}

}  // namespace
}  // namespace virtual_session
