#pragma once

#include <cstdint>

namespace ipodctl {

/// What PlayControl does. Play and pause need version 1.13 of the Extended Interface lingo.
enum class PlayControlCode : uint8_t {
  kTogglePlayPause = 1,
  kStop = 2,
  kNextTrack = 3,
  kPreviousTrack = 4,
  kStartFastForward = 5,
  kStartRewind = 6,
  kEndSeek = 7,
  kNext = 8,
  kPrevious = 9,
  kPlay = 10,
  kPause = 11,
};

/// What the iPod's player does.
enum class PlayState : uint8_t { kStopped = 0, kPlaying = 1, kPaused = 2 };

/// A shuffle mode (off, tracks, albums) or a repeat mode (off, one track, all).
enum class PlayMode : uint8_t { kOff = 0, kTracks = 1, kAlbums = 2 };

/// What GetIndexedPlayingTrackInfo asks for.
enum class TrackInfoType : uint8_t { kGenre = 5 };

}  // namespace ipodctl
