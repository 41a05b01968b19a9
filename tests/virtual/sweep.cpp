#include "virtual/sweep.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <iterator>
#include <sstream>
#include <utility>

#include "support/last_words.h"
#include "support/replay.h"
#include "support/slice.h"
#include "virtual/story.h"

namespace virtual_session {
namespace {

using virtual_platform::Direction;
using virtual_platform::Loss;

constexpr unsigned kCaseSeconds = 60;
// A slice has one of so many points.
constexpr std::uint64_t kSliceOfTheShort = 13;
constexpr std::uint64_t kSliceOfTheLong = 211;

bool isShort(const Script& script) { return &script == &shortScript(); }

bool usesExports(const Script& script) { return &script.promises == &exportPromises(); }

bool isInSlice(const Script& script, std::uint64_t point, std::uint64_t thinning) {
  const std::uint64_t slice =
      (isShort(script) ? kSliceOfTheShort : kSliceOfTheLong) * std::max(thinning, kSliceThinning);
  return isReplay() || std::getenv("VIRTUAL_ALL") != nullptr || point % slice == 0;
}

// It differs for each test, so that their slices do not have the same points.
std::uint64_t firstPoint() {
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  return std::hash<std::string>()(std::string(test->test_suite_name()) + test->name());
}

/// A session, and whether the disturbance occurred.
struct Played {
  Calls calls;
  Calls meanwhile;                ///< of other threads of the host, at the same time
  std::size_t announcements = 0;  ///< of the accessory, to the iPod
  bool struck = false;

  Calls all() const {
    Calls both = calls;
    both.insert(both.end(), meanwhile.begin(), meanwhile.end());
    return both;
  }
};

/// Successive sessions.
struct Sessions {
  std::string failure;  ///< of the world, or of the order of the locks
  Played first;
  Played between;
  Played last;
};

std::size_t announcementsIn(const VirtualSession& session) {
  return session.ipod.countReceived(simulator::Lingo::kGeneral, simulator::kIdentifyDeviceLingoes);
}

Played playOne(VirtualSession& session, const std::function<bool(VirtualSession&)>& hasStruck) {
  Played played;
  const std::size_t before = announcementsIn(session);
  played.calls = session.play();
  session.awaitOthers();
  played.announcements = announcementsIn(session) - before;
  played.struck = hasStruck && hasStruck(session);
  played.meanwhile = std::exchange(session.meanwhile, {});
  return played;
}

Sessions play(const Case& each) {
  Sessions played;
  VirtualSession session(each.seed, each.script);
  each.disturb(session);
  played.failure = session.run([&] {
    played.first = playOne(session, each.hasStruck);
    session.mend();
    if (each.disturbNext) {
      each.disturbNext(session);
      played.between = playOne(session, each.hasStruckNext);
      session.mend();
    }
    played.last = playOne(session, nullptr);
  });
  showReplay(session.world.trace());
  if (played.failure.empty() && usesExports(each.script)) {
    played.failure = findDisorder(session.world.trace());
  }
  return played;
}

/// Connecting, disconnecting and asking for it.
std::vector<std::string> connectionsIn(const std::vector<std::string>& results) {
  std::vector<std::string> some;
  std::copy_if(
      results.begin(), results.end(), std::back_inserter(some),
      [](const std::string& result) { return result.find("onnect") != std::string::npos; });
  return some;
}

/// Returns "", or the first result that is not the usual one.
std::string findSurprise(const std::vector<std::string>& results,
                         const std::vector<std::string>& usual) {
  const auto [found, expected] =
      std::mismatch(results.begin(), results.end(), usual.begin(), usual.end());
  if (found == results.end() && expected == usual.end()) return "";
  const std::string nothing = "nothing";
  return (found != results.end() ? *found : nothing) + " instead of " +
         (expected != usual.end() ? *expected : nothing);
}

/// Returns "", or why this is not the usual session.
std::string findSurprise(const Case& each, const Calls& calls) {
  const std::vector<std::string>& usual = each.script.results;
  if (each.outcome != Outcome::kConnection) return findSurprise(resultsOf(calls), usual);
  return findSurprise(connectionsIn(resultsOf(calls)), connectionsIn(usual));
}

/// Returns "" if nothing is wrong.
std::string faultOf(const Case& each, const Played& played) {
  const bool mustSucceed = !played.struck || each.outcome == Outcome::kFullSession;
  const std::string surprise = mustSucceed ? findSurprise(each, played.calls) : "";
  if (!surprise.empty()) return "no session: " + surprise;
  return findFault(played.all(), each.script.promises, each.stall);
}

/// The same. What a session leaves must not cost an attempt of the next connection either.
std::string faultOf(const Case& each, const Sessions& played) {
  if (!played.failure.empty()) return played.failure;
  std::string fault = faultOf(each, played.first);
  if (fault.empty() && each.disturbNext) fault = faultOf(each, played.between);
  if (!fault.empty()) return fault;
  const Script& script = each.script;
  const std::string surprise = findSurprise(each, played.last.calls);
  if (!surprise.empty()) return "no session afterwards: " + surprise;
  if (played.last.announcements != 1 + script.model.silentIdentifications) {
    return "announced " + std::to_string(played.last.announcements) + " times afterwards";
  }
  const Time stall = each.outcome == Outcome::kConnection ? each.stall : Time(0);
  return findFault(played.last.calls, script.promises, stall);
}

std::string difference(const OpenThings& before, const OpenThings& after) {
  if (after == before) return "";
  std::ostringstream words;
  words << "left " << after << ", before: " << before;
  return words.str();
}

}  // namespace

std::uint64_t ordersOf(const Script& script, std::uint64_t ofTheShort, std::uint64_t ofTheLong) {
  return isShort(script) ? ofTheShort : ofTheLong;
}

Sweep::Sweep() {
  // Recorded here, so that a single case does not leave an entry.
  for (const char* const name : kScripts) {
    for (const Promise& promise : scriptCalled(name).promises)
      longestTimes[exportOf(promise.name)] = Time(0);
  }
}

void Sweep::SetUp() { points = firstPoint(); }

void Sweep::TearDown() {
  std::cout << cases << " cases, " << strikes << " struck\n";
  RecordProperty("cases", cases);
  RecordProperty("struck", strikes);
  for (const auto& [name, time] : longestTimes) {
    if (time == Time(0)) continue;
    const auto microseconds = std::chrono::duration_cast<std::chrono::microseconds>(time).count();
    RecordProperty("longest_us_" + name, std::to_string(microseconds));
  }
}

void Sweep::tryCase(const Case& each) {
  if (!isWanted(each.name())) return;
  const LastWords words(replayCommand(each.name()));
  alarm(kCaseSeconds);  // restarted for each case: a sweep may take long
  prepare(each.script);
  const OpenThings before = openThings();
  std::string fault;
  {
    const Sessions played = play(each);
    fault = faultOf(each, played);
    // With other threads a call also waits for theirs, and for a device that stalls without limit.
    if (played.first.meanwhile.empty() && each.stall == Time(0))
      keepLongest(longestTimes, played.first.calls);
    if (played.first.struck) ++strikes;
  }
  if (fault.empty()) fault = difference(before, openThings());
  EXPECT_EQ(fault, "") << replayCommand(each.name());
  ++cases;
}

// A script creates permanent objects in the library, such as the logo, that another does not.
void Sweep::prepare(const Script& script) {
  if (prepared != &script) warmUp(script);
  prepared = &script;
}

void Sweep::tryPoint(const Case& each) {
  if (isInSlice(each.script, points++, thinning)) tryCase(each);
}

std::size_t bytesOfASession(const Script& script, Direction direction) {
  VirtualSession session(1, script);
  session.run([&] { session.play(); });
  return session.cable.passed(direction);
}

std::string nameOf(Direction direction) {
  return direction == Direction::kFromIpod ? "from-ipod" : "to-ipod";
}

std::string nameOf(Loss loss) {
  constexpr const char* kWords[] = {"end-of-file", "read-error", "write-error", "silence", "gone"};
  return kWords[static_cast<int>(loss)];
}

std::string identifierOf(const std::vector<std::string>& words) {
  std::string identifier;
  for (const std::string& word : words)
    identifier += (identifier.empty() ? "" : "_") + word;
  std::replace(identifier.begin(), identifier.end(), '-', '_');
  return identifier;
}

}  // namespace virtual_session
