#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/// What a track is to the iPod's database: music belongs to artists and albums, the other two kinds
/// have categories of their own and are left out of the music categories.
enum class MediaKind { kMusic, kAudiobook, kPodcast };

/// One track, as its tags tell. All texts are UTF-8 and may be empty.
struct Track {
  std::string title;
  std::string artist;
  std::string album;
  std::string genre;
  std::string composer;
  MediaKind kind = MediaKind::kMusic;
  uint32_t discNumber = 0;   ///< 0: not known
  uint32_t trackNumber = 0;  ///< 0: not known
  uint32_t releaseYear = 0;  ///< 0: not known
  uint32_t lengthMs = 0;
  uint32_t sampleRate = 44100;  ///< Hz
};

/// A named list of tracks, as indexes into MusicLibrary::tracks.
struct Playlist {
  std::string name;
  std::vector<uint32_t> tracks;
};

/// Everything that the simulated iPod can play.
struct MusicLibrary {
  std::string name;  ///< the iPod's name, which the first playlist (the whole library) bears
  std::vector<Track> tracks;
  std::vector<Playlist> playlists;  ///< the user's own; the whole library is not among them
};

}  // namespace simulator
