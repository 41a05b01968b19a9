#include "music/built_in_library.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "music/built_in_tables.h"

namespace simulator {
namespace {

static_assert(std::size(kStyles) == static_cast<size_t>(StyleId::kPodcast) + 1,
              "a style for every StyleId");

/// Returns a number of the range that looks random; the same for the same seed.
uint32_t spread(size_t seed, const Range& range) {
  auto mixed = static_cast<uint32_t>(seed) + 1;
  for (int round = 0; round < 2; ++round) {
    mixed *= 2654435761U;
    mixed ^= mixed >> 15;
  }
  return range.lowest + mixed % (range.highest - range.lowest + 1);
}

void replaceAll(std::string& text, std::string_view placeholder, std::string_view word) {
  for (size_t at = text.find(placeholder); at != std::string::npos; at = text.find(placeholder)) {
    text.replace(at, placeholder.size(), word);
  }
}

/// Replaces the pair of words with the one of this number. All pairs are used before one is
/// repeated. The strides, which do not divide the length of any list, keep neighbours in a list
/// from being neighbours on an album.
void replacePair(std::string& text, const Style& style, size_t number,
                 std::string_view firstPlaceholder, std::string_view secondPlaceholder) {
  const size_t firstCount = std::max<size_t>(style.first.size(), 1);
  const size_t second = number % firstCount + number / firstCount;
  replaceAll(text, firstPlaceholder, style.first.at(number * 3));
  replaceAll(text, secondPlaceholder, style.second.at(second * 5));
}

/// `serial` is the track's place in the whole library, `position` that on its album, both from 0.
std::string makeTitle(const Style& style, size_t serial, size_t position) {
  const size_t firstOnAlbum = serial - position;
  std::string title(style.patterns.at(position));
  replacePair(title, style, serial, "{a}", "{b}");
  replacePair(title, style, firstOnAlbum + position / style.patterns.size(), "{w}", "{k}");
  replaceAll(title, "{n}", std::to_string(position + 1));
  return title;
}

MediaKind kindOf(StyleId style) {
  if (style == StyleId::kAudiobook) return MediaKind::kAudiobook;
  return style == StyleId::kPodcast ? MediaKind::kPodcast : MediaKind::kMusic;
}

const Style& styleOf(const ArtistRow& artist) { return kStyles[static_cast<size_t>(artist.style)]; }

/// The common properties of the tracks of one album.
struct Album {
  std::string_view name;
  uint32_t year;
  size_t serial;  ///< among all albums
};

Track makeTrack(const ArtistRow& artist, const Album& album, size_t serial, size_t position) {
  const Style& style = styleOf(artist);
  const auto& rates = kSampleRates[static_cast<size_t>(artist.rates)];
  Track track;
  track.title = makeTitle(style, serial, position);
  track.artist = artist.name;
  track.album = album.name;
  track.genre = style.genre;
  if (style.composers.size() != 0) track.composer = style.composers.at(album.serial);
  track.kind = kindOf(artist.style);
  track.trackNumber = static_cast<uint32_t>(position + 1);
  track.releaseYear = album.year;
  track.lengthMs = spread(serial, {style.seconds.lowest * 1000, style.seconds.highest * 1000});
  track.sampleRate = rates[position % rates.size()];
  return track;
}

/// Distributes the album's tracks to its discs. The tracks of each disc are numbered from 1.
void numberDiscs(Track& track, uint32_t discs, uint32_t tracksOnAlbum) {
  if (discs < 2) return;
  const uint32_t perDisc = tracksOnAlbum / discs;
  const uint32_t position = track.trackNumber - 1;
  track.discNumber = position / perDisc + 1;
  track.trackNumber = position % perDisc + 1;
}

class LibraryMaker {
 public:
  MusicLibrary make() {
    library.name = "Demo iPod";
    for (const ArtistRow& artist : kArtists)
      addAlbums(artist);
    for (const CompilationRow& compilation : kCompilations)
      addCompilation(compilation);
    for (const PlaylistRow& playlist : kPlaylists)
      addPlaylist(playlist);
    return std::move(library);
  }

 private:
  void addAlbums(const ArtistRow& artist) {
    uint32_t year = artist.firstYear;
    for (std::string_view name : artist.albums) {
      if (name.empty()) return;
      addAlbum(artist, {name, year, albums++});
      year += 2;
    }
  }

  void addAlbum(const ArtistRow& artist, const Album& album) {
    const Style& style = styleOf(artist);
    const uint32_t tracks = spread(album.serial, style.tracks);
    for (size_t position = 0; position < tracks; ++position) {
      Track track = makeTrack(artist, album, library.tracks.size(), position);
      numberDiscs(track, style.discs, tracks);
      library.tracks.push_back(std::move(track));
    }
  }

  void addCompilation(const CompilationRow& row) {
    const Album album{row.name, row.year, albums++};
    for (size_t position = 0; position < row.tracks; ++position) {
      const ArtistRow& artist = kArtists[row.firstArtist + position * row.artistStep];
      library.tracks.push_back(makeTrack(artist, album, library.tracks.size(), position));
    }
  }

  void addPlaylist(const PlaylistRow& row) {
    Playlist playlist;
    playlist.name = row.name;
    size_t fitting = 0;
    for (uint32_t index = 0; index < library.tracks.size(); ++index) {
      if (playlist.tracks.size() == row.limit) break;
      const Track& track = library.tracks[index];
      if (track.kind != MediaKind::kMusic || !row.fits(track)) continue;
      if (fitting++ % row.step == 0) playlist.tracks.push_back(index);
    }
    library.playlists.push_back(std::move(playlist));
  }

  MusicLibrary library;
  size_t albums = 0;
};

}  // namespace

MusicLibrary builtInLibrary() { return LibraryMaker().make(); }

}  // namespace simulator
