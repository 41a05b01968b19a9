// The time of a virtual world. It does not change while code runs, and jumps when every thread
// waits.
#pragma once

#include <algorithm>
#include <chrono>
#include <optional>

namespace virtual_platform {

/// The time since the world's start, or a span of time.
using Time = std::chrono::nanoseconds;

/// Returns the earlier time; no value: never.
inline std::optional<Time> earlier(std::optional<Time> first, std::optional<Time> second) {
  if (!first || !second) return first ? first : second;
  return std::min(*first, *second);
}

}  // namespace virtual_platform
