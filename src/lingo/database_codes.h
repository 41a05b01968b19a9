#pragma once

#include <cstdint>

namespace ipodctl {

/// A category of records in the iPod's music database.
enum class Category : uint8_t {
  kPlaylists = 1,
  kArtists = 2,
  kAlbums = 3,
  kGenres = 4,
  kTracks = 5,
  kComposers = 6,
  kAudiobooks = 7,
  kPodcasts = 8,
  kNone = 0xFF,  ///< no list is open
};

/// The index of a record in its category, or of a track in the playing list, from 0.
using RecordIndex = int32_t;

/// FF FF FF FF on the wire. Selecting it undoes the selection of its category; as the playing
/// track it means that nothing plays.
constexpr RecordIndex kNoRecord = -1;

/// The order of the records below a selection.
enum class SortOrder : uint8_t {
  kGenre = 0,
  kArtist = 1,
  kComposer = 2,
  kAlbum = 3,
  kName = 4,
  kDefault = 0xFF,
};

}  // namespace ipodctl
