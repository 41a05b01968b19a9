#pragma once

#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <vector>

#include "database/catalogue.h"
#include "wire/lingo.h"

namespace simulator {

/// The database engine: the selections of the accessory, and the lists of records that remain.
///
/// A selection is at most one record on each level: playlist > genre > artist or composer > album,
/// audiobook or podcast > track. The records of a category are those with a track that every
/// selection above the level of the category includes. Selecting a record removes the selections on
/// its level and below. Music categories contain only music; a playlist of the user can contain any
/// track.
class Database {
 public:
  /// The list of all tracks is sorted by `allTracks` when no sort order was requested.
  explicit Database(const Catalogue& music, SortOrder allTracks = SortOrder::kDefault)
      : catalogue(music), allTracksOrder(allTracks) {}

  /// Selects nothing, sorts by default, and forgets which categories were counted.
  void reset();
  /// Selects a record of a category, by its index in the list before the call; from then on lists
  /// are sorted by `order`. kNoIndex undoes the category's selection and those below it. It changes
  /// nothing when the category is not selected, and is refused for tracks.
  Status select(Category category, uint32_t index, SortOrder order);

  /// Returns the number of records, and remembers that this category was counted.
  uint32_t count(Category category);
  bool wasCounted(Category category) const { return counted[static_cast<size_t>(category)]; }
  uint32_t size(Category category) { return static_cast<uint32_t>(records(category).size()); }
  /// Returns the name of a record. The index must be below size().
  const std::string& recordName(Category category, uint32_t index);

  /// Returns the selected tracks in the current order, even when a single one of them is selected.
  const std::vector<uint32_t>& tracks() { return records(Category::kTrack); }
  /// Returns the single selected track, if there is one.
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

/// Returns the category of a wire number, if there is one.
std::optional<Category> categoryOf(uint8_t number);
/// Returns the sort order of a wire number; kDefault for an unknown number.
SortOrder sortOrderOf(uint8_t number);

}  // namespace simulator
