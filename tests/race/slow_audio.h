#pragma once

#include <chrono>

namespace race {

/// slow_audio.cpp replaces the audio library's SelectFrequency. While a SlowAudio lives, that
/// function takes this long. One at a time.
class SlowAudio {
 public:
  explicit SlowAudio(std::chrono::milliseconds duration);
  ~SlowAudio();
  SlowAudio(const SlowAudio&) = delete;
  SlowAudio& operator=(const SlowAudio&) = delete;

  /// Returns whether a thread is in SelectFrequency now.
  static bool isBusy();
};

}  // namespace race
