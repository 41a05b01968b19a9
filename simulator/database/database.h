#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <vector>

#include "database/catalogue.h"
#include "wire/lingo.h"

namespace simulator {

/// The database engine: what the accessory has selected, and the lists of records that this leaves.
///
/// A selection is at most one record on each level: playlist > genre > artist or composer > album,
/// audiobook or podcast > track. The records of a category are those with a track that every
/// selection above the category's own level lets through; selecting one drops what was selected on
/// its level and below. Music categories know music only; a playlist of the user can hold any
/// track.
class Database {
 public:
  /// Without a sort order that was asked for, all tracks together are sorted by `allTracks`.
  explicit Database(const Catalogue& music, SortOrder allTracks = SortOrder::kDefault)
      : catalogue(music), allTracksOrder(allTracks) {}

  /// Selects nothing, sorts by default, and forgets which categories were counted.
  void reset();
  /// Selects a record of a category, by its index in the list before the call; from then on lists
  /// are sorted by `order`. kNoIndex takes the category's selection back, and with it what is
  /// below; where the category is not selected that changes nothing, and tracks refuse it.
  Status select(Category category, uint32_t index, SortOrder order);

  /// Counts and remembers that this category was counted.
  uint32_t count(Category category);
  bool wasCounted(Category category) const { return counted[static_cast<size_t>(category)]; }
  uint32_t size(Category category) { return static_cast<uint32_t>(records(category).size()); }
  /// The index must be below size().
  const std::string& recordName(Category category, uint32_t index);

  /// The selected tracks, whatever single track is selected among them, in the current order.
  const std::vector<uint32_t>& tracks() { return records(Category::kTrack); }
  /// The single track that is selected, if one is.
  std::optional<uint32_t> selectedTrack() const;

 private:
  enum Level : size_t { kPlaylistLevel, kGenreLevel, kPersonLevel, kCollectionLevel, kTrackLevel };
  static constexpr size_t kLevels = 5;

  struct Selected {
    Category category;
    uint32_t record;  ///< playlist number, table entry or track
  };

  static Level levelOf(Category category);
  void dropFrom(Level level);
  const std::vector<uint32_t>& records(Category category);
  std::vector<uint32_t> listRecords(Category category) const;
  std::vector<uint32_t> listPlaylists() const;
  std::vector<uint32_t> listNames(Category category) const;
  std::vector<uint32_t> tracksFor(Category category) const;
  std::vector<uint32_t> startingTracks(Category category) const;
  std::vector<uint32_t> playlistTracks(uint32_t playlist) const;
  bool passes(uint32_t track, Level level) const;
  MediaKind kindOf(Category category) const;
  bool inUserPlaylist() const;
  bool isNarrowed() const;
  void sortTracks(std::vector<uint32_t>& tracks) const;

  const Catalogue& catalogue;
  const SortOrder allTracksOrder;
  std::array<std::optional<Selected>, kLevels> selection;
  SortOrder order = SortOrder::kDefault;
  std::bitset<kLastCategory + 1> counted;
  std::array<std::optional<std::vector<uint32_t>>, kLastCategory + 1> lists;
};

/// The category of a wire number, if there is one.
std::optional<Category> categoryOf(uint8_t number);
/// The sort order of a wire number; an unknown number sorts by default.
SortOrder sortOrderOf(uint8_t number);

}  // namespace simulator
