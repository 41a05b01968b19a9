#include "clock.h"

#include <algorithm>
#include <limits>

namespace coredll {

Deadline deadlineIn(TimeLimit limit) {
  constexpr std::uint64_t kCentury = 100ull * 366 * 24 * 60 * 60 * 1000;
  if (!limit || *limit > kCentury) return std::nullopt;
  return Clock::now() + std::chrono::milliseconds(*limit);
}

Deadline earlier(const Deadline& first, const Deadline& second) {
  if (!first) return second;
  if (!second) return first;
  return std::min(*first, *second);
}

bool isOver(const Deadline& deadline) { return deadline && Clock::now() >= *deadline; }

int pollTimeout(const Deadline& deadline) {
  if (!deadline) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

}  // namespace coredll
