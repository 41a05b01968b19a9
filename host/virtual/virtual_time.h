// The time of a virtual world: it stands still while code runs and jumps when everybody waits.
#ifndef VIRTUAL_TIME_H
#define VIRTUAL_TIME_H

#include <algorithm>
#include <chrono>
#include <optional>

namespace virtual_platform {

// Since the world's start, or a span.
using Time = std::chrono::nanoseconds;

// none: never.
inline std::optional<Time> earlier(std::optional<Time> first, std::optional<Time> second) {
  if (!first || !second) return first ? first : second;
  return std::min(*first, *second);
}

}  // namespace virtual_platform

#endif
