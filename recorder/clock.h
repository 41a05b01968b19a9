#pragma once

#include <cstdint>

namespace recorder {

/// The time since the recording began. One thread at a time uses it.
class Clock {
 public:
  void start();
  /// Returns microseconds, never fewer than the last time.
  uint64_t micros();

 private:
  uint64_t frequency = 0;  ///< set by start()
  uint64_t beginning = 0;
  uint64_t last = 0;
};

}  // namespace recorder
