#include "database/catalogue.h"

#include <algorithm>
#include <functional>
#include <numeric>
#include <tuple>
#include <unordered_map>

#include "database/sort_key.h"

namespace simulator {

namespace {

using NameOfTrack = std::function<const std::string&(const Track&)>;

/// The index of the ranks of an order.
enum RankSlot : size_t { kByGenre, kByComposer, kByAlbum, kByName, kByReleaseDate, kByDefault };

RankSlot rankSlot(SortOrder order) {
  switch (order) {
    case SortOrder::kGenre:
      return kByGenre;
    case SortOrder::kComposer:
      return kByComposer;
    case SortOrder::kAlbum:
      return kByAlbum;
    case SortOrder::kName:
      return kByName;
    case SortOrder::kReleaseDate:
      return kByReleaseDate;
    case SortOrder::kArtist:
    case SortOrder::kPlaylist:
    case SortOrder::kDefault:
      return kByDefault;
  }
  return kByDefault;
}

/// Returns the distinct names and, by track, the number of its name in the order of appearance.
NameTable gatherNames(const std::vector<Track>& tracks, const NameOfTrack& nameOf) {
  NameTable table;
  std::unordered_map<std::string, uint32_t> numbers;
  for (const Track& track : tracks) {
    const std::string& name = nameOf(track);
    if (name.empty()) {
      table.ofTrack.push_back(kNoEntry);
      continue;
    }
    const auto added = numbers.try_emplace(name, static_cast<uint32_t>(table.names.size()));
    if (added.second) table.names.push_back(name);
    table.ofTrack.push_back(added.first->second);
  }
  return table;
}

/// Returns, by old number, the place in the sorted names.
std::vector<uint32_t> sortedPlaces(const std::vector<std::string>& names) {
  std::vector<std::string> keys;
  keys.reserve(names.size());
  for (const std::string& name : names)
    keys.push_back(sortKey(name));
  std::vector<uint32_t> order(names.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
    return std::tie(keys[a], names[a]) < std::tie(keys[b], names[b]);
  });
  std::vector<uint32_t> places(names.size());
  for (uint32_t place = 0; place < order.size(); ++place)
    places[order[place]] = place;
  return places;
}

NameTable makeTable(const std::vector<Track>& tracks, const NameOfTrack& nameOf) {
  NameTable table = gatherNames(tracks, nameOf);
  const std::vector<uint32_t> places = sortedPlaces(table.names);
  std::vector<std::string> sorted(table.names.size());
  for (size_t i = 0; i < places.size(); ++i)
    sorted[places[i]] = std::move(table.names[i]);
  table.names = std::move(sorted);
  for (uint32_t& entry : table.ofTrack) {
    if (entry != kNoEntry) entry = places[entry];
  }
  return table;
}

const std::string& nameForKind(const Track& track, MediaKind kind) {
  static const std::string none;
  if (track.kind != kind) return none;
  return track.album.empty() ? track.title : track.album;
}

using Ranks = std::vector<uint32_t>;

/// Returns, by track, its place when the tracks are sorted by this number. Tracks with the same
/// number keep their previous order.
Ranks rankBy(const std::vector<uint32_t>& numbers, const Ranks& before) {
  const size_t count = numbers.size();
  Ranks trackAt(count);
  std::vector<uint64_t> sorted(count);
  for (uint32_t track = 0; track < count; ++track) {
    trackAt[before[track]] = track;
    sorted[track] = uint64_t{numbers[track]} << 32 | before[track];
  }
  std::sort(sorted.begin(), sorted.end());
  Ranks rank(count);
  for (uint32_t place = 0; place < count; ++place) {
    rank[trackAt[static_cast<uint32_t>(sorted[place])]] = place;
  }
  return rank;
}

std::vector<uint32_t> numbersOf(const std::vector<Track>& tracks, uint32_t Track::*number) {
  std::vector<uint32_t> numbers;
  numbers.reserve(tracks.size());
  for (const Track& track : tracks)
    numbers.push_back(track.*number);
  return numbers;
}

}  // namespace

Catalogue::Catalogue(MusicLibrary library) : content(std::move(library)) {
  buildTables();
  buildRanks();
  defaultOrder.resize(content.tracks.size());
  for (uint32_t track = 0; track < trackCount(); ++track) {
    defaultOrder[ranks[kByDefault][track]] = track;
  }
  musicTracks = tracksOfKind(MediaKind::kMusic);
}

const NameTable& Catalogue::table(Category category) const {
  switch (category) {
    case Category::kArtist:
      return artists;
    case Category::kAlbum:
      return albums;
    case Category::kGenre:
      return genres;
    case Category::kComposer:
      return composers;
    case Category::kAudiobook:
      return audiobooks;
    case Category::kPodcast:
      return podcasts;
    case Category::kPlaylist:
    case Category::kTrack:
      break;
  }
  return titles;
}

const std::vector<uint32_t>& Catalogue::trackRanks(SortOrder order) const {
  return ranks[rankSlot(order)];
}

std::vector<uint32_t> Catalogue::tracksOfKind(MediaKind kind) const {
  std::vector<uint32_t> tracks;
  for (uint32_t index : defaultOrder) {
    if (track(index).kind == kind) tracks.push_back(index);
  }
  return tracks;
}

void Catalogue::buildTables() {
  const std::vector<Track>& tracks = content.tracks;
  artists = makeTable(tracks, [](const Track& t) -> const std::string& { return t.artist; });
  albums = makeTable(tracks, [](const Track& t) -> const std::string& { return t.album; });
  genres = makeTable(tracks, [](const Track& t) -> const std::string& { return t.genre; });
  composers = makeTable(tracks, [](const Track& t) -> const std::string& { return t.composer; });
  titles = makeTable(tracks, [](const Track& t) -> const std::string& { return t.title; });
  audiobooks = makeTable(tracks, [](const Track& t) -> const std::string& {
    return nameForKind(t, MediaKind::kAudiobook);
  });
  podcasts = makeTable(tracks, [](const Track& t) -> const std::string& {
    return nameForKind(t, MediaKind::kPodcast);
  });
}

void Catalogue::buildRanks() {
  const std::vector<Track>& tracks = content.tracks;
  Ranks asListed(tracks.size());
  std::iota(asListed.begin(), asListed.end(), 0);
  const Ranks byTitle = rankBy(titles.ofTrack, asListed);
  const Ranks byNumber = rankBy(numbersOf(tracks, &Track::trackNumber), byTitle);
  const Ranks byDisc = rankBy(numbersOf(tracks, &Track::discNumber), byNumber);
  const Ranks byAlbum = rankBy(albums.ofTrack, byDisc);
  const Ranks byArtist = rankBy(artists.ofTrack, byAlbum);
  ranks[kByDefault] = byArtist;
  ranks[kByAlbum] = byAlbum;
  ranks[kByGenre] = rankBy(genres.ofTrack, byArtist);
  ranks[kByComposer] = rankBy(composers.ofTrack, byArtist);
  ranks[kByName] = rankBy(titles.ofTrack, byArtist);
  ranks[kByReleaseDate] = rankBy(numbersOf(tracks, &Track::releaseYear), byArtist);
}

}  // namespace simulator
