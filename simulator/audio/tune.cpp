#include "audio/tune.h"

#include <cmath>

namespace simulator {
namespace {

constexpr double kLowest = 165;  // Hz
constexpr uint32_t kPitches = 720;
constexpr uint32_t kPitchesAnOctave = 240;
/// Has no factor in common with kPitches, so that neighbours are far apart and none is repeated.
constexpr uint32_t kStep = 271;

constexpr double kLoudness = 7000;
constexpr double kSwellsASecond = 2;
constexpr double kTurn = 6.283185307179586;

/// Returns a value from 0.4 to 1 that begins and ends low.
double swell(double time) { return 0.7 - 0.3 * std::cos(kTurn * kSwellsASecond * time); }

}  // namespace

double tunePitch(uint32_t track) {
  const uint32_t place = static_cast<uint32_t>(uint64_t{track} * kStep % kPitches);
  return kLowest * std::exp2(static_cast<double>(place) / kPitchesAnOctave);
}

void Tune::read(Frame* frames, size_t count) {
  for (Frame* frame = frames; frame != frames + count; ++frame, ++next) {
    const double time = static_cast<double>(next) / hertz;
    const double angle = kTurn * pitch * time;
    const double loudness = kLoudness * swell(time);
    const double fundamental = std::sin(angle);
    frame->left = static_cast<int16_t>(loudness * (fundamental + 0.30 * std::sin(2 * angle)));
    frame->right = static_cast<int16_t>(loudness * (fundamental + 0.20 * std::sin(3 * angle)));
  }
}

}  // namespace simulator
