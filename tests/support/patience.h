#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

namespace host_test {

/// The time that a test waits for an event before it fails.
constexpr std::chrono::seconds kPatience{10};

/// A wait in several steps with one common time limit.
class Patience {
 public:
  bool isOver() const { return std::chrono::steady_clock::now() >= end; }

  /// Leaves the processor to others, before a test looks again.
  static void pause() { std::this_thread::sleep_for(std::chrono::microseconds(100)); }

  /// Returns the rest of the time for poll().
  int left() const {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
  }

 private:
  const std::chrono::steady_clock::time_point end = std::chrono::steady_clock::now() + kPatience;
};

}  // namespace host_test
