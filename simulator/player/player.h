#pragma once

#include <optional>

#include "player/playing_list.h"
#include "simulated_time.h"

namespace simulator {

/// With the numbers on the wire.
enum class PlayState : uint8_t { kStopped = 0, kPlaying = 1, kPaused = 2 };
enum class Repeat : uint8_t { kOff = 0, kOne = 1, kAll = 2 };
enum class SeekDirection : int8_t { kForward = 1, kBackward = -1 };

/// How a model's player behaves.
struct PlayerHabits {
  /// From this position on, "previous" restarts the track instead of leaving it; 0: it never does.
  Time previousRestartsAfter = seconds(3);
  /// How many times faster than playing a fast-forward or rewind runs.
  int seekSpeed = 8;
};

/// The changes since the last call.
struct PlayerChanges {
  bool track = false;    ///< another track or another index plays now
  bool stopped = false;  ///< playing has ended
};

/// The playback engine: a playing list that advances with the time that it is given.
///
/// Every call with `now` first advances the time to it. Time never goes back.
class Player {
 public:
  Player(const Catalogue& music, PlayerHabits model, Random& chance)
      : catalogue(music), habits(model), random(chance) {}

  void advance(Time now);
  /// Returns when the current track will end by itself, if it will.
  std::optional<Time> nextEnd() const;
  PlayerChanges takeChanges();

  /// Plays these tracks from `first` on; an empty list stops the player.
  void play(std::vector<uint32_t> tracks, size_t first, Time now);
  void resume(Time now);
  void pause(Time now);
  void stop(Time now);
  void next(Time now);
  void previous(Time now);
  void startSeek(SeekDirection direction, Time now);
  void endSeek(Time now);
  /// Moves within the track that plays or is paused, at most to its end. Does nothing when the
  /// player is stopped.
  void moveTo(Time position, Time now);
  /// The index must be below list().size().
  void goTo(uint32_t index, Time now);
  void setShuffle(Shuffle mode);
  void setRepeat(Repeat mode) { repeatMode = mode; }

  PlayState state() const { return playState; }
  Shuffle shuffle() const { return shuffleMode; }
  Repeat repeat() const { return repeatMode; }
  const PlayingList& list() const { return playing; }
  /// Returns the library's track that plays or is paused.
  std::optional<uint32_t> currentTrack() const;
  Time position(Time now) const;

 private:
  int speed() const;
  Time duration() const;
  void settle(Time now);
  void startTrack(uint32_t index, Time now);
  void endTrack(Time now);
  void stopAt(uint32_t index, Time now);

  const Catalogue& catalogue;
  PlayerHabits habits;
  Random& random;
  PlayingList playing;
  PlayState playState = PlayState::kStopped;
  Shuffle shuffleMode = Shuffle::kOff;
  Repeat repeatMode = Repeat::kOff;
  int seek = 0;  ///< -1 rewinds, 1 winds forward
  Time settledAt{0};
  Time settledPosition{0};
  PlayerChanges changes;
};

}  // namespace simulator
