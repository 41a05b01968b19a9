#pragma once

#include "audio/sample_source.h"

namespace simulator {

/// Returns the pitch of a track's tune in Hz, for the track with this number. 720 successive tracks
/// have different ones, from 165 to 1320 Hz.
double tunePitch(uint32_t track);

/// A generated tune without an end, for a track without a file that can be decoded: one tone that
/// swells twice a second. Its fundamental is always the loudest partial.
class Tune final : public SampleSource {
 public:
  Tune(uint32_t track, uint32_t sampleRate) : pitch(tunePitch(track)), hertz(sampleRate) {}

  uint32_t rate() const override { return hertz; }
  void seek(Time position) override { next = frameAt(position, hertz); }
  void read(Frame* frames, size_t count) override;

 private:
  const double pitch;
  const uint32_t hertz;
  uint64_t next = 0;  ///< frame
};

}  // namespace simulator
