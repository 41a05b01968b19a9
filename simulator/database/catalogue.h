#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "music/music_library.h"

namespace simulator {

/// The database's categories, with their numbers on the wire.
enum class Category : uint8_t {
  kPlaylist = 1,
  kArtist = 2,
  kAlbum = 3,
  kGenre = 4,
  kTrack = 5,
  kComposer = 6,
  kAudiobook = 7,
  kPodcast = 8,
};
constexpr uint8_t kFirstCategory = 1;
constexpr uint8_t kLastCategory = 8;

/// The orders that a sorted selection can ask for, with their numbers on the wire.
enum class SortOrder : uint8_t {
  kGenre = 0,
  kArtist = 1,
  kComposer = 2,
  kAlbum = 3,
  kName = 4,
  kPlaylist = 5,
  kReleaseDate = 6,
  kDefault = 0xFF,
};

/// The entry of a track that has none in a table.
constexpr uint32_t kNoEntry = 0xFFFFFFFF;

/// The distinct names of one tag, sorted as the iPod sorts: an entry's number is also its rank.
struct NameTable {
  std::vector<std::string> names;
  std::vector<uint32_t> ofTrack;  ///< by track: its entry, or kNoEntry when the tag is empty
};

/// A music library with every index that the database needs. It is built once and does not change
/// afterwards. Tracks are numbered as in the library.
class Catalogue {
 public:
  explicit Catalogue(MusicLibrary library);

  const MusicLibrary& library() const { return content; }
  const Track& track(uint32_t index) const { return content.tracks[index]; }
  uint32_t trackCount() const { return static_cast<uint32_t>(content.tracks.size()); }

  /// Returns the names of a category whose records are names, that is of every category except
  /// playlists and tracks.
  const NameTable& table(Category category) const;
  /// Returns, by track, its place among all tracks in this order. kPlaylist is like kDefault.
  const std::vector<uint32_t>& trackRanks(SortOrder order) const;
  /// Returns the tracks of the music categories, in the default order: artist, album, track number.
  const std::vector<uint32_t>& music() const { return musicTracks; }
  /// Returns the tracks of one kind, in the default order.
  std::vector<uint32_t> tracksOfKind(MediaKind kind) const;

 private:
  void buildTables();
  void buildRanks();

  MusicLibrary content;
  NameTable artists, albums, genres, composers, titles, audiobooks, podcasts;
  std::array<std::vector<uint32_t>, 6> ranks;
  std::vector<uint32_t> defaultOrder;
  std::vector<uint32_t> musicTracks;
};

}  // namespace simulator
