// Lets chosen calls fail.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace virtual_platform {

/// Which of the next calls fail: the one after the first `allowed`, only that one or all later
/// ones, too.
struct FailurePoint {
  std::size_t allowed;
  bool andAllLater;
};

class Failures {
 public:
  void arm(const FailurePoint& wanted);  ///< counts the calls from here
  void disarm() { point.reset(); }

  /// Returns, for each call in order, whether it fails.
  bool strikesNext();

  std::size_t asked() const { return askedCount; }
  std::size_t struck() const { return struckCount; }

 private:
  std::optional<FailurePoint> point;
  std::size_t askedCount = 0;
  std::size_t struckCount = 0;
};

/// Returns the failures of a platform function, in a world or outside, or of another name that a
/// test uses. CreateSemaphoreW, CreateThread and CreateFileW then fail as when the system has no
/// memory; ReadFile, WriteFile and FlushFileBuffers fail as with a broken device.
Failures& failuresOf(const std::string& function);

void disarmAllFailures();

}  // namespace virtual_platform
