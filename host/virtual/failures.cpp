#include "failures.h"

#include <map>

namespace virtual_platform {
namespace {

/// Never destroyed: the library's static objects are constructed before main and destroyed after
/// it.
std::map<std::string, Failures>& allFailures() {
  static auto& all = *new std::map<std::string, Failures>;
  return all;
}

}  // namespace

void Failures::arm(const FailurePoint& wanted) {
  point = wanted;
  askedCount = 0;
  struckCount = 0;
}

bool Failures::strikesNext() {
  const std::size_t place = askedCount++;
  if (!point || place < point->allowed) return false;
  if (place > point->allowed && !point->andAllLater) return false;
  ++struckCount;
  return true;
}

Failures& failuresOf(const std::string& function) { return allFailures()[function]; }

void disarmAllFailures() {
  for (auto& [function, failures] : allFailures())
    failures.disarm();
}

}  // namespace virtual_platform
