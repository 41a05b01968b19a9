// Calls that fail although nothing is wrong with them.
#ifndef VIRTUAL_FAILURES_H
#define VIRTUAL_FAILURES_H

#include <cstddef>
#include <optional>
#include <string>

namespace virtual_platform {

// Which of the coming calls fail: the one behind the first `allowed`, alone or with all that
// follow.
struct FailurePoint {
  std::size_t allowed;
  bool andAllLater;
};

class Failures {
 public:
  void arm(const FailurePoint& wanted);  // counts from here
  void disarm() { point.reset(); }

  // For each call, in order: whether it fails.
  bool strikesNext();

  std::size_t asked() const { return askedCount; }
  std::size_t struck() const { return struckCount; }

 private:
  std::optional<FailurePoint> point;
  std::size_t askedCount = 0;
  std::size_t struckCount = 0;
};

// Those of a platform function, in a world or outside, or of what else a test has a name for. The
// platform's fail as when the system has no room for what is to be made (CreateSemaphoreW,
// CreateThread, CreateFileW) and as a broken device does (ReadFile, WriteFile, FlushFileBuffers).
Failures& failuresOf(const std::string& function);

void disarmAllFailures();

}  // namespace virtual_platform

#endif
