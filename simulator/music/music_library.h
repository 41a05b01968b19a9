#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simulator {

/// The kind of a track in the iPod's database. Music belongs to artists and albums; the other two
/// kinds have separate categories and are not in the music categories.
enum class MediaKind { kMusic, kAudiobook, kPodcast };

/// One track, as its tags describe it. All texts are UTF-8 and may be empty.
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
  std::string name;  ///< the name of the iPod and of the first playlist (the whole library)
  std::vector<Track> tracks;
  std::vector<Playlist> playlists;  ///< the user's playlists; the whole library is not among them
  std::vector<std::string> files;   ///< by track: the path of its sound; or nothing for any track
};

}  // namespace simulator
