#pragma once

#include <atomic>
#include <thread>

namespace race {

/// Where threads wait for one another: all go on at once.
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
