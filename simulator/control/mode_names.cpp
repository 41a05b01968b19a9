#include "control/mode_names.h"

namespace simulator {

const char* nameOf(PlayState state) {
  switch (state) {
    case PlayState::kPlaying:
      return "playing";
    case PlayState::kPaused:
      return "paused";
    default:
      return "stopped";
  }
}

const char* nameOf(Shuffle mode) {
  switch (mode) {
    case Shuffle::kTracks:
      return "tracks";
    case Shuffle::kAlbums:
      return "albums";
    default:
      return "off";
  }
}

const char* nameOf(Repeat mode) {
  switch (mode) {
    case Repeat::kOne:
      return "track";
    case Repeat::kAll:
      return "all";
    default:
      return "off";
  }
}

}  // namespace simulator
