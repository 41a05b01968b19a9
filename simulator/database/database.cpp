#include "database/database.h"

#include <algorithm>
#include <numeric>

namespace simulator {

std::optional<Category> categoryOf(uint8_t number) {
  if (number < kFirstCategory || number > kLastCategory) return std::nullopt;
  return static_cast<Category>(number);
}

SortOrder sortOrderOf(uint8_t number) {
  return number <= static_cast<uint8_t>(SortOrder::kReleaseDate) ? static_cast<SortOrder>(number)
                                                                 : SortOrder::kDefault;
}

void Database::reset() {
  dropFrom(kPlaylistLevel);
  order = SortOrder::kDefault;
  counted.reset();
}

Status Database::select(Category category, uint32_t index, SortOrder newOrder) {
  const Level level = levelOf(category);
  if (index == kNoIndex) {
    if (category == Category::kTrack) return Status::kBadParameter;
    if (!selection[level] || selection[level]->category != category) return Status::kOk;
    dropFrom(level);
  } else {
    const std::vector<uint32_t>& list = records(category);
    if (index >= list.size()) return Status::kBadParameter;
    const uint32_t record = list[index];
    dropFrom(level);
    selection[level] = Selected{category, record};
  }
  order = newOrder;
  return Status::kOk;
}

uint32_t Database::count(Category category) {
  counted.set(static_cast<size_t>(category));
  return size(category);
}

const std::string& Database::recordName(Category category, uint32_t index) {
  const uint32_t record = records(category)[index];
  const MusicLibrary& library = catalogue.library();
  if (category == Category::kTrack) return catalogue.track(record).title;
  if (category != Category::kPlaylist) return catalogue.table(category).names[record];
  return record == 0 ? library.name : library.playlists[record - 1].name;
}

std::optional<uint32_t> Database::selectedTrack() const {
  if (!selection[kTrackLevel]) return std::nullopt;
  return selection[kTrackLevel]->record;
}

Database::Level Database::levelOf(Category category) {
  switch (category) {
    case Category::kPlaylist:
      return kPlaylistLevel;
    case Category::kGenre:
      return kGenreLevel;
    case Category::kArtist:
    case Category::kComposer:
      return kPersonLevel;
    case Category::kAlbum:
    case Category::kAudiobook:
    case Category::kPodcast:
      return kCollectionLevel;
    case Category::kTrack:
      break;
  }
  return kTrackLevel;
}

void Database::dropFrom(Level level) {
  std::fill(selection.begin() + level, selection.end(), std::nullopt);
  for (auto& list : lists)
    list.reset();
}

const std::vector<uint32_t>& Database::records(Category category) {
  auto& list = lists[static_cast<size_t>(category)];
  if (!list) list = listRecords(category);
  return *list;
}

std::vector<uint32_t> Database::listRecords(Category category) const {
  if (category == Category::kPlaylist) return listPlaylists();
  if (category == Category::kTrack) return tracksFor(category);
  return listNames(category);
}

/// Number 0 is the whole library, n is the user's playlist n - 1.
std::vector<uint32_t> Database::listPlaylists() const {
  std::vector<uint32_t> playlists(catalogue.library().playlists.size() + 1);
  std::iota(playlists.begin(), playlists.end(), 0);
  return playlists;
}

/// Returns the names in the order of the first track with each name. They are sorted by name, that
/// is by number, when the order depends only on the name.
std::vector<uint32_t> Database::listNames(Category category) const {
  const NameTable& table = catalogue.table(category);
  std::vector<bool> seen(table.names.size());
  std::vector<uint32_t> names;
  for (uint32_t track : tracksFor(category)) {
    const uint32_t entry = table.ofTrack[track];
    if (entry == kNoEntry || seen[entry] || catalogue.track(track).kind != kindOf(category)) {
      continue;
    }
    seen[entry] = true;
    names.push_back(entry);
  }
  const bool isByName =
      order == SortOrder::kDefault || order == SortOrder::kName || order == SortOrder::kPlaylist;
  if (isByName) std::sort(names.begin(), names.end());
  return names;
}

std::vector<uint32_t> Database::tracksFor(Category category) const {
  std::vector<uint32_t> tracks = startingTracks(category);
  const Level level = levelOf(category);
  tracks.erase(std::remove_if(tracks.begin(), tracks.end(),
                              [&](uint32_t track) { return !passes(track, level); }),
               tracks.end());
  sortTracks(tracks);
  return tracks;
}

std::vector<uint32_t> Database::startingTracks(Category category) const {
  if (inUserPlaylist()) return playlistTracks(selection[kPlaylistLevel]->record - 1);
  const MediaKind kind = kindOf(category);
  return kind == MediaKind::kMusic ? catalogue.music() : catalogue.tracksOfKind(kind);
}

std::vector<uint32_t> Database::playlistTracks(uint32_t playlist) const {
  std::vector<uint32_t> tracks;
  for (uint32_t track : catalogue.library().playlists[playlist].tracks) {
    if (track < catalogue.trackCount()) tracks.push_back(track);
  }
  return tracks;
}

/// Returns whether every selection above a level includes the track.
bool Database::passes(uint32_t track, Level level) const {
  for (size_t above = kGenreLevel; above < level; ++above) {
    if (!selection[above]) continue;
    const NameTable& table = catalogue.table(selection[above]->category);
    if (table.ofTrack[track] != selection[above]->record) return false;
  }
  return true;
}

/// Returns the kind of the tracks of a category. The tracks of a selected audiobook or podcast are
/// of its kind.
MediaKind Database::kindOf(Category category) const {
  if (category == Category::kTrack && selection[kCollectionLevel]) {
    return kindOf(selection[kCollectionLevel]->category);
  }
  if (category == Category::kAudiobook) return MediaKind::kAudiobook;
  if (category == Category::kPodcast) return MediaKind::kPodcast;
  return MediaKind::kMusic;
}

bool Database::inUserPlaylist() const {
  return selection[kPlaylistLevel] && selection[kPlaylistLevel]->record > 0;
}

bool Database::isNarrowed() const {
  const bool hasSelectionBelow =
      std::any_of(selection.begin() + kGenreLevel, selection.begin() + kTrackLevel,
                  [](const auto& each) { return each.has_value(); });
  return hasSelectionBelow || inUserPlaylist();
}

/// Sorts the tracks. A playlist of the user keeps its order unless another one was requested.
void Database::sortTracks(std::vector<uint32_t>& tracks) const {
  const bool isPlain = order == SortOrder::kDefault && !isNarrowed();
  const SortOrder wanted = isPlain ? allTracksOrder : order;
  if (wanted == SortOrder::kDefault || wanted == SortOrder::kPlaylist) return;
  const std::vector<uint32_t>& rank = catalogue.trackRanks(wanted);
  std::stable_sort(tracks.begin(), tracks.end(),
                   [&](uint32_t a, uint32_t b) { return rank[a] < rank[b]; });
}

}  // namespace simulator
