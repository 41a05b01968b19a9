#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "simulated_time.h"

namespace simulator {

/// A sample of both channels.
struct Frame {
  int16_t left = 0;
  int16_t right = 0;
};

/// The sound of a track from one position on, in order.
class SampleSource {
 public:
  virtual ~SampleSource() = default;

  virtual uint32_t rate() const = 0;  ///< Hz
  /// Continues at this position of the track.
  virtual void seek(Time position) = 0;
  /// Fills all frames; after the end of the sound with silence.
  virtual void read(Frame* frames, size_t count) = 0;
};

/// Returns the frame at a position.
inline uint64_t frameAt(Time position, uint32_t rate) {
  // Seconds and the rest separately: the product would exceed 64 bits after some days.
  const auto whole = std::chrono::duration_cast<seconds>(position);
  const auto rest = static_cast<uint64_t>((position - whole).count());
  return static_cast<uint64_t>(whole.count()) * rate + rest * rate / 1000000000;
}

}  // namespace simulator
