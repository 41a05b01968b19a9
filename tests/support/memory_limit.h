#pragma once

#include <cstdint>

/// Which of the coming allocations fail: the one behind the first `allowed`, alone or with all that
/// follow it.
struct FailurePoint {
  uint32_t allowed;
  bool andAllLater;
};

/// While one lives, allocations that may fail (new (std::nothrow)) do so at its failure point,
/// whichever thread asks. Only in programs that link memory_limit.cpp, and one at a time.
class MemoryLimit {
 public:
  explicit MemoryLimit(const FailurePoint& point);
  ~MemoryLimit();
  MemoryLimit(const MemoryLimit&) = delete;
  MemoryLimit& operator=(const MemoryLimit&) = delete;

  /// Whether an allocation has failed.
  bool struck() const;

  /// Allocations that may fail, so far.
  uint32_t asked() const;

  /// Allocations by a plain new so far, which cannot fail and so have no place in the library.
  uint32_t unchecked() const;
};

constexpr FailurePoint kNoMemory{0, true};
constexpr FailurePoint kAllMemory{0xFFFFFFFF, true};

/// Calls `attempt` with every failure point that it meets, and a last time with one that it does
/// not reach. `attempt` says whether the failure struck.
template <class Attempt>
void forEachFailure(const Attempt& attempt) {
  for (const bool andAllLater : {false, true}) {
    uint32_t allowed = 0;
    while (attempt(FailurePoint{allowed, andAllLater}))
      ++allowed;
  }
}
