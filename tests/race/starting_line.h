#pragma once

#include <atomic>
#include <thread>

namespace race {

/// Threads wait here for one another and continue at the same time.
class StartingLine {
 public:
  explicit StartingLine(int threads) : missing(threads) {}

  void cross() {
    for (--missing; missing > 0;)
      std::this_thread::yield();
  }

 private:
  std::atomic<int> missing;
};

}  // namespace race
