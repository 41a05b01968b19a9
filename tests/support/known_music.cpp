#include "support/known_music.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace session {

using simulator::MediaKind;
using simulator::MusicLibrary;
using simulator::Track;

namespace {

struct Letters {
  std::u32string_view accented;
  char32_t plain;
};

constexpr Letters kLetters[] = {
    {U"ÀÁÂÃÄÅÆàáâãäåæ", 'a'}, {U"Çç", 'c'},       {U"ÈÉÊËèéêë", 'e'},
    {U"ÌÍÎÏìíîï", 'i'},       {U"Ðð", 'd'},       {U"Ññ", 'n'},
    {U"ÒÓÔÕÖØòóôõöø", 'o'},   {U"ÙÚÛÜùúûü", 'u'}, {U"Ýýÿ", 'y'},
};

std::u32string codePoints(const std::string& utf8) {
  std::u32string points;
  for (const char byte : utf8) {
    const auto bits = static_cast<unsigned char>(byte);
    if ((bits & 0xC0) == 0x80) {
      points.back() = points.back() << 6 | (bits & 0x3F);
    } else {
      points.push_back(bits < 0x80 ? bits : bits < 0xE0 ? bits & 0x1F : bits & 0x0F);
    }
  }
  return points;
}

char32_t plainLetter(char32_t letter) {
  if (letter >= 'A' && letter <= 'Z') return letter - 'A' + 'a';
  if (letter < 0x80) return letter;
  if (letter == U'ß') return 's';
  for (const Letters& row : kLetters) {
    if (row.accented.find(letter) != std::u32string_view::npos) return row.plain;
  }
  return letter;
}

std::u32string withoutArticle(const std::u32string& text) {
  for (const std::u32string_view article : {U"a ", U"an ", U"the "}) {
    if (text.size() > article.size() && text.compare(0, article.size(), article) == 0) {
      return text.substr(article.size());
    }
  }
  return text;
}

// Empty names are sorted last.
std::tuple<bool, std::u32string, std::string> collation(const std::string& name) {
  std::u32string letters = codePoints(name);
  std::transform(letters.begin(), letters.end(), letters.begin(), plainLetter);
  return {name.empty(), withoutArticle(letters), name};
}

template <class Key>
Tracks sorted(const Tracks& tracks, Key keyOf) {
  std::vector<std::pair<decltype(keyOf(Track())), const Track*>> keyed;
  for (const Track& track : tracks)
    keyed.emplace_back(keyOf(track), &track);
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  Tracks inOrder;
  for (const auto& [key, track] : keyed)
    inOrder.push_back(*track);
  return inOrder;
}

}  // namespace

Tracks tracksWhere(const MusicLibrary& library, const std::function<bool(const Track&)>& holds) {
  Tracks chosen;
  std::copy_if(library.tracks.begin(), library.tracks.end(), std::back_inserter(chosen), holds);
  return chosen;
}

Tracks musicOf(const MusicLibrary& library) {
  return tracksWhere(library, [](const Track& track) { return track.kind == MediaKind::kMusic; });
}

Tracks musicWith(const MusicLibrary& library, TextOfTrack text, const std::string& value) {
  return tracksWhere(library, [&](const Track& track) {
    return track.kind == MediaKind::kMusic && track.*text == value;
  });
}

Tracks playlistTracks(const MusicLibrary& library, size_t playlist) {
  Tracks tracks;
  for (const uint32_t track : library.playlists.at(playlist).tracks)
    tracks.push_back(library.tracks.at(track));
  return tracks;
}

Tracks byArtist(const Tracks& tracks) {
  return sorted(tracks, [](const Track& track) {
    return std::tuple(collation(track.artist), collation(track.album), track.discNumber,
                      track.trackNumber, collation(track.title));
  });
}

Tracks byTitle(const Tracks& tracks) {
  return sorted(byArtist(tracks), [](const Track& track) { return collation(track.title); });
}

Names textsOf(const Tracks& tracks, TextOfTrack text) {
  Names texts;
  for (const Track& track : tracks)
    texts.push_back(track.*text);
  return texts;
}

Names namesOf(const Tracks& tracks, TextOfTrack text) {
  Names names = textsOf(tracks, text);
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return collation(a) < collation(b); });
  names.erase(std::unique(names.begin(), names.end()), names.end());
  if (!names.empty() && names.back().empty()) names.pop_back();
  return names;
}

std::string hostText(const std::string& text) {
  std::string units;
  for (const char32_t point : codePoints(text)) {
    if (point > 0xFFFF) return "";
    units.push_back(point > 0xFF ? ' ' : static_cast<char>(point));
  }
  return units;
}

Names hostTexts(const Names& texts) {
  Names units;
  std::transform(texts.begin(), texts.end(), std::back_inserter(units), hostText);
  return units;
}

}  // namespace session
