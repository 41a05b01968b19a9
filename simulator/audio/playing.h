#pragma once

#include <chrono>

#include "device/simulated_ipod.h"

namespace simulator {

using Moment = std::chrono::steady_clock::time_point;

/// What is heard from one moment on, if nothing happens.
struct Playing {
  bool isHeard = false;  ///< the rest matters only then
  Moment at;
  uint32_t track = 0;       ///< its number in the library
  std::string file;         ///< its path; empty: there is none
  uint32_t trackRate = 0;   ///< Hz
  uint32_t streamRate = 0;  ///< Hz, as announced to the accessory
  Time position{0};         ///< at that moment

  /// Returns whether this is what `before` leads to.
  bool continues(const Playing& before) const;
  /// Returns the same from a later moment on.
  Playing from(Moment later) const;
};

/// Returns what the accessory hears of the iPod: a track that plays and is not being wound, if the
/// accessory has acknowledged its sample rate.
Playing playingOf(const SimulatedIpod& ipod, Moment now);

}  // namespace simulator
