#include "virtual/sweep.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <sstream>

namespace virtual_session {
namespace {

using virtual_platform::Direction;

constexpr unsigned kCaseSeconds = 60;
// Of so many points a slice has one.
constexpr std::uint64_t kSliceOfTheShort = 13;
constexpr std::uint64_t kSliceOfTheLong = 211;

bool isWanted(const Case& each) {
  return !isReplay() || std::getenv("VIRTUAL_CASE") == each.name();
}

bool isShort(const Script& script) { return &script == &shortScript(); }

bool isInSlice(const Script& script, std::uint64_t point) {
  const std::uint64_t slice = isShort(script) ? kSliceOfTheShort : kSliceOfTheLong;
  return isReplay() || std::getenv("VIRTUAL_ALL") != nullptr || point % slice == 0;
}

// Another one for each test, so that their slices are not all of the same points.
std::uint64_t firstPoint() {
  const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
  return std::hash<std::string>()(std::string(test->test_suite_name()) + test->name());
}

void show(const std::vector<std::string>& trace) {
  for (const std::string& call : trace)
    std::cout << call << '\n';
}

/// A disturbed session and the one behind it.
struct Sessions {
  std::string failure;  ///< of the world
  bool struck = false;
  Calls first;
  Calls beside;  ///< of other threads of the host, at the same time
  Calls second;

  Calls disturbed() const {
    Calls all = first;
    all.insert(all.end(), beside.begin(), beside.end());
    return all;
  }
};

Sessions play(const Case& each) {
  Sessions played;
  VirtualSession session(each.seed, each.script);
  each.disturb(session);
  played.failure = session.run([&] {
    played.first = session.play();
    session.awaitOthers();
    played.struck = each.hasStruck(session);
    session.mend();
    played.second = session.play();
  });
  played.beside = session.beside;
  if (isReplay()) show(session.world.trace());
  return played;
}

/// Empty when nothing is wrong.
std::string faultOf(const Case& each, const Sessions& played) {
  const Script& script = each.script;
  if (!played.failure.empty()) return played.failure;
  const std::string fault = findFault(played.disturbed(), script.promises);
  if (!fault.empty()) return fault;
  if (resultsOf(played.second) != script.results) return "no session afterwards";
  const bool mustSucceed = !played.struck || each.outcome == Outcome::kFullSession;
  if (mustSucceed && resultsOf(played.first) != script.results) return "no session";
  return findFault(played.second, script.promises);
}

std::string difference(const OpenThings& before, const OpenThings& after) {
  if (after == before) return "";
  std::ostringstream words;
  words << "left " << after << ", before: " << before;
  return words.str();
}

}  // namespace

bool isReplay() { return std::getenv("VIRTUAL_CASE") != nullptr; }

std::uint64_t ordersOf(const Script& script, std::uint64_t ofTheShort) {
  constexpr std::uint64_t kOrdersOfTheLong = 2;
  return isShort(script) ? ofTheShort : kOrdersOfTheLong;
}

Sweep::Sweep() {
  // Here, so that no case leaves an entry behind.
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
  if (!isWanted(each)) return;
  alarm(kCaseSeconds);  // for each case anew: a sweep may take long
  prepare(each.script);
  const OpenThings before = openThings();
  std::string fault;
  {
    const Sessions played = play(each);
    fault = faultOf(each, played);
    // Beside other threads a call waits for theirs, too.
    if (played.beside.empty()) keepLongest(longestTimes, played.first);
    if (played.struck) ++strikes;
  }
  if (fault.empty()) fault = difference(before, openThings());
  EXPECT_EQ(fault, "") << "VIRTUAL_CASE=" << each.name();
  ++cases;
}

// What one script leaves in the library for good, such as the logo, another one does not.
void Sweep::prepare(const Script& script) {
  if (prepared != &script) warmUp(script);
  prepared = &script;
}

void Sweep::tryPoint(const Case& each) {
  if (isInSlice(each.script, points++)) tryCase(each);
}

std::size_t bytesOfASession(const Script& script, Direction direction) {
  VirtualSession session(1, script);
  session.run([&] { session.play(); });
  return session.cable.passed(direction);
}

std::string nameOf(Direction direction) {
  return direction == Direction::kFromIpod ? "from-ipod" : "to-ipod";
}

std::string identifierOf(const std::vector<std::string>& words) {
  std::string identifier;
  for (const std::string& word : words)
    identifier += (identifier.empty() ? "" : "_") + word;
  std::replace(identifier.begin(), identifier.end(), '-', '_');
  return identifier;
}

}  // namespace virtual_session
