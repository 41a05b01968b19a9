#include "virtual/sweep.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace virtual_session {
namespace {

using virtual_platform::Direction;

constexpr unsigned kCaseSeconds = 60;
// No divisor of the kinds of faults at one byte, so that a slice has all of them.
constexpr std::uint64_t kSlice = 13;

bool isWanted(const Case& each) {
  return !isReplay() || std::getenv("VIRTUAL_CASE") == each.name();
}

bool isInSlice(std::uint64_t point) {
  return isReplay() || std::getenv("VIRTUAL_ALL") != nullptr || point % kSlice == 0;
}

void show(const std::vector<std::string>& trace) {
  for (const std::string& call : trace)
    std::cout << call << '\n';
}

std::string sessionFault(const Case& each, bool& struck) {
  VirtualSession session(each.seed);
  each.disturb(session);
  Calls first;
  Calls second;
  std::string fault = session.run([&] {
    first = session.play();
    struck = each.hasStruck(session);
    session.mend();
    second = session.play();
  });
  if (isReplay()) show(session.world.trace());
  if (fault.empty()) fault = findFault(first);
  if (fault.empty()) fault = findFault(second);
  if (fault.empty() && resultsOf(second) != resultsOfASession()) fault = "no session afterwards";
  const bool mustSucceed = !struck || each.outcome == Outcome::kFullSession;
  if (fault.empty() && mustSucceed && resultsOf(first) != resultsOfASession()) fault = "no session";
  return fault;
}

/// Empty when nothing is wrong.
std::string faultOf(const Case& each, bool& struck) {
  const OpenThings before = openThings();
  const std::string fault = sessionFault(each, struck);
  if (!fault.empty()) return fault;
  const OpenThings after = openThings();
  if (after == before) return "";
  std::ostringstream difference;
  difference << "left " << after << ", before: " << before;
  return difference.str();
}

}  // namespace

bool isReplay() { return std::getenv("VIRTUAL_CASE") != nullptr; }

Sweep::Sweep() { warmUp(); }

void Sweep::TearDown() { std::cout << cases << " cases, " << strikes << " struck\n"; }

void Sweep::tryCase(const Case& each) {
  if (!isWanted(each)) return;
  alarm(kCaseSeconds);  // for each case anew: a sweep may take long
  bool struck = false;
  EXPECT_EQ(faultOf(each, struck), "") << "VIRTUAL_CASE=" << each.name();
  ++cases;
  if (struck) ++strikes;
}

void Sweep::tryPoint(const Case& each) {
  if (isInSlice(points++)) tryCase(each);
}

std::size_t bytesOfASession(Direction direction) {
  VirtualSession session(1);
  session.run([&] { session.play(); });
  return session.cable.passed(direction);
}

std::string nameOf(Direction direction) {
  return direction == Direction::kFromIpod ? "from-ipod" : "to-ipod";
}

}  // namespace virtual_session
