#pragma once

#include <cstdint>

/// Which of the next allocations fail: the one after the first `allowed`, alone or with all that
/// follow it.
struct FailurePoint {
  uint32_t allowed;
  bool andAllLater;
};

/// While a MemoryLimit lives, allocations that may fail (new (std::nothrow)) do so at its failure
/// point, in every thread. Only in programs that link memory_limit.cpp, and one at a time.
class MemoryLimit {
 public:
  explicit MemoryLimit(const FailurePoint& point);
  ~MemoryLimit();
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

  /// Returns whether an allocation has failed.
  bool struck() const;

  /// Returns the number of allocations so far that may fail.
  uint32_t asked() const;

  /// Returns the number of allocations so far by a plain new. The library must not make them: it
  /// cannot handle their failure.
  uint32_t unchecked() const;
};

constexpr FailurePoint kNoMemory{0, true};
constexpr FailurePoint kAllMemory{0xFFFFFFFF, true};

/// Calls `attempt` with every failure point that it reaches, and finally with one that it does not
/// reach. `attempt` returns whether the failure occurred.
template <class Attempt>
void forEachFailure(const Attempt& attempt) {
  for (const bool andAllLater : {false, true}) {
    uint32_t allowed = 0;
    while (attempt(FailurePoint{allowed, andAllLater}))
      ++allowed;
  }
}
