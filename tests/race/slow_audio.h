#pragma once

#include <chrono>

namespace race {

/// Programs that have slow_audio.cpp stand in front of the audio library's SelectFrequency. While
/// one lives, that takes so long. One at a time.
class SlowAudio {
 public:
  explicit SlowAudio(std::chrono::milliseconds duration);
  ~SlowAudio();
  SlowAudio(const SlowAudio&) = delete;
  SlowAudio& operator=(const SlowAudio&) = delete;

  /// Whether a thread is in there now.
  static bool isBusy();
};

}  // namespace race
