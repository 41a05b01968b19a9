#include "audio/playing.h"

namespace simulator {
namespace {

/// Positions are exact, apart from the end of a track.
constexpr Time kSamePosition = milliseconds(1);

constexpr uint32_t kLowestRate = 1000;     // Hz
constexpr uint32_t kHighestRate = 192000;  // Hz

}  // namespace

bool Playing::continues(const Playing& before) const {
  if (!isHeard || !before.isHeard) return isHeard == before.isHeard;
  if (track != before.track || streamRate != before.streamRate) return false;
  const Time expected = before.position + (at - before.at);
  return std::chrono::abs(position - expected) <= kSamePosition;
}

Playing Playing::from(Moment later) const {
  Playing moved = *this;
  if (isHeard) moved.position += later - at;
  moved.at = later;
  return moved;
}

Playing playingOf(const SimulatedIpod& ipod, Moment now) {
  Playing playing;
  playing.at = now;
  const Player& player = ipod.player();
  const std::optional<uint32_t> track = player.currentTrack();
  const uint32_t rate = ipod.audioRate();
  const bool isRunning = player.state() == PlayState::kPlaying && !player.isSeeking();
  if (!track || !isRunning || rate < kLowestRate || rate > kHighestRate) return playing;
  const Track& properties = ipod.library().tracks[*track];
  playing.isHeard = true;
  playing.track = *track;
  const std::vector<std::string>& files = ipod.library().files;
  if (*track < files.size()) playing.file = files[*track];
  playing.trackRate = properties.sampleRate;
  playing.streamRate = rate;
  playing.position = player.position(ipod.time());
  return playing;
}

}  // namespace simulator
