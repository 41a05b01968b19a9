#pragma once

#include "frame.h"

namespace isochplay {

/// Where the samples are played or written. Used by one thread, which it may block.
class Output {
 public:
  virtual ~Output() = default;

  /// The stream starts at this rate in Hz.
  virtual void start(int rate) = 0;
  virtual void play(int rate, const Frames& frames) = 0;
  /// The stream has stopped.
  virtual void stop() = 0;
  /// Nothing more has arrived yet.
  virtual void pause() {}
};

}  // namespace isochplay
