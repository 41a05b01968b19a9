#include "music/built_in_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "music/json_library.h"
#include "music/text.h"

namespace simulator {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::Le;
using testing::SizeIs;

std::vector<Track> tracksOf(MediaKind kind) {
  std::vector<Track> tracks = builtInLibrary().tracks;
  tracks.erase(std::remove_if(tracks.begin(), tracks.end(),
                              [kind](const Track& track) { return track.kind != kind; }),
               tracks.end());
  return tracks;
}

std::set<std::string> different(const std::vector<Track>& tracks, std::string Track::*field) {
  std::set<std::string> texts;
  for (const Track& track : tracks)
    texts.insert(track.*field);
  return texts;
}

std::vector<Track> albumOf(const std::string& artist, const std::string& album) {
  std::vector<Track> tracks;
  for (const Track& track : builtInLibrary().tracks) {
    if (track.artist == artist && track.album == album) tracks.push_back(track);
  }
  return tracks;
}

std::vector<uint32_t> ratesOf(const std::vector<Track>& tracks) {
  std::vector<uint32_t> rates;
  for (const Track& track : tracks)
    rates.push_back(track.sampleRate);
  return rates;
}

TEST(BuiltInLibrary, IsLargeEnoughToPageThrough) {
  const std::vector<Track> music = tracksOf(MediaKind::kMusic);
  EXPECT_THAT(builtInLibrary().tracks, SizeIs(AllOf(Ge(500U), Le(900U))));
  EXPECT_THAT(different(music, &Track::artist), SizeIs(Ge(80U)));
  EXPECT_THAT(different(music, &Track::album), SizeIs(Ge(100U)));
  EXPECT_THAT(different(music, &Track::genre), SizeIs(Ge(12U)));
  EXPECT_THAT(different(music, &Track::composer), SizeIs(Ge(8U)));
  EXPECT_THAT(different(tracksOf(MediaKind::kAudiobook), &Track::album), SizeIs(Ge(3U)));
  EXPECT_THAT(different(tracksOf(MediaKind::kPodcast), &Track::album), SizeIs(Ge(3U)));
}

TEST(BuiltInLibrary, IsTheSameAtEveryCall) {
  EXPECT_EQ(toJson(builtInLibrary()), toJson(builtInLibrary()));
}

TEST(BuiltInLibrary, NamesEveryTrackArtistAlbumAndGenreInUtf8) {
  for (const Track& track : builtInLibrary().tracks) {
    for (const std::string& text : {track.title, track.artist, track.album, track.genre}) {
      EXPECT_FALSE(text.empty()) << track.title;
      EXPECT_TRUE(isUtf8(text)) << text;
      EXPECT_THAT(text, testing::Not(testing::ContainsRegex("[{}]"))) << "placeholder left";
    }
  }
}

TEST(BuiltInLibrary, HasNamesOfEveryKindOfCharacter) {
  const std::vector<Track> music = tracksOf(MediaKind::kMusic);
  const std::set<std::string> artists = different(music, &Track::artist);
  const std::set<std::string> albums = different(music, &Track::album);
  EXPECT_THAT(artists, Contains(HasSubstr("\xC3\x89lo\xC3\xAFse")));                   // É, ï
  EXPECT_THAT(artists, Contains(HasSubstr("\xC3\x85got")));                            // Å
  EXPECT_THAT(albums, Contains(HasSubstr("Gro\xC3\x9Fstadt")));                        // ß
  EXPECT_THAT(albums, Contains(HasSubstr("12 \xE2\x82\xAC")));                         // €
  EXPECT_THAT(artists, Contains(HasSubstr("\xCE\xA4\xCE\xB1 ")));                      // Greek
  EXPECT_THAT(artists, Contains("\xE9\x9C\xA7\xE7\xAC\x9B\xE6\xA5\xBD\xE5\x9B\xA3"));  // Japanese
  EXPECT_THAT(albums, Contains("Basket \xF0\x9F\xA7\xBA Mode"));                       // emoji
}

TEST(BuiltInLibrary, HasVeryShortAndVeryLongNamesAndArticles) {
  const std::set<std::string> artists = different(tracksOf(MediaKind::kMusic), &Track::artist);
  EXPECT_THAT(artists, Contains("Qy"));
  EXPECT_THAT(artists, Contains(SizeIs(Ge(150U))));
  EXPECT_THAT(artists, Contains("The Crane Operators"));
}

TEST(BuiltInLibrary, ChangesTheSampleRateOnTheFirstArtistsAlbum) {
  EXPECT_EQ(builtInLibrary().tracks[0].artist, "Aalto Varispeed");
  const std::vector<Track> album = albumOf("Aalto Varispeed", "Changing Rates");
  EXPECT_THAT(ratesOf(album), ElementsAre(44100, 48000, 32000, 48000, 44100, 48000, 32000, 48000));
  for (const Track& track : album)
    EXPECT_THAT(track.lengthMs, AllOf(Ge(20000U), Le(40000U)));
}

TEST(BuiltInLibrary, ListsTheArtistWithChangingRatesFirst) {
  for (const std::string& artist : different(builtInLibrary().tracks, &Track::artist)) {
    EXPECT_GE(artist, "Aalto Varispeed");
  }
}

TEST(BuiltInLibrary, HasAlbumsAtOtherRates) {
  EXPECT_THAT(ratesOf(albumOf("Kilohertz Nursery", "Lullabies in 48k")), Each(48000));
  EXPECT_THAT(ratesOf(albumOf("Big Lottie Prewitt", "Pawnshop Sunday")), Each(32000));
  const std::vector<uint32_t> rates = ratesOf(builtInLibrary().tracks);
  EXPECT_GT(std::count(rates.begin(), rates.end(), 44100U), 700);
}

TEST(BuiltInLibrary, HasPlausibleLengthsAndYears) {
  std::set<uint32_t> lengths;
  for (const Track& track : builtInLibrary().tracks) {
    EXPECT_THAT(track.lengthMs, AllOf(Ge(20000U), Le(3900000U))) << track.title;
    EXPECT_THAT(track.releaseYear, AllOf(Ge(1950U), Le(2010U))) << track.title;
    lengths.insert(track.lengthMs);
  }
  EXPECT_THAT(lengths, SizeIs(Ge(800U)));
}

TEST(BuiltInLibrary, NumbersTheTracksOfEachDiscFromOneWithoutGaps) {
  std::map<std::tuple<std::string, std::string, uint32_t>, uint32_t> last;
  for (const Track& track : builtInLibrary().tracks) {
    const bool compilation =
        track.album == "Ferry Terminal Sampler" || track.album == "Sommerfest am Kanal";
    const std::string artist = compilation ? "" : track.artist;
    const uint32_t expected = ++last[{artist, track.album, track.discNumber}];
    EXPECT_EQ(track.trackNumber, expected) << track.title;
  }
}

TEST(BuiltInLibrary, DistributesATwoDiscAlbumEvenly) {
  const std::vector<Track> album = albumOf("Quartetto Belvento", "String Quartets, Book I");
  ASSERT_THAT(album, SizeIs(8));
  EXPECT_EQ(album[3].discNumber, 1U);
  EXPECT_EQ(album[3].trackNumber, 4U);
  EXPECT_EQ(album[4].discNumber, 2U);
  EXPECT_EQ(album[4].trackNumber, 1U);
  EXPECT_THAT(album[4].title, HasSubstr(": I. Allegro"));
}

TEST(BuiltInLibrary, NamesTheMovementsOfAWorkAfterTheWork) {
  const std::vector<Track> album =
      albumOf("Ottilie Gr\xC3\xBCnfels", "Nocturnes for a Small Piano");
  ASSERT_THAT(album, SizeIs(8));
  const auto workOf = [&album](size_t i) {
    return album[i].title.substr(0, album[i].title.find(':'));
  };
  for (size_t i : {1u, 2u, 3u})
    EXPECT_EQ(workOf(i), workOf(0));
  for (size_t i : {5u, 6u, 7u})
    EXPECT_EQ(workOf(i), workOf(4));
  EXPECT_NE(workOf(4), workOf(0));
}

TEST(BuiltInLibrary, SeldomRepeatsATitle) {
  const std::vector<Track> tracks = builtInLibrary().tracks;
  EXPECT_THAT(different(tracks, &Track::title), SizeIs(Ge(tracks.size() - 10)));
}

TEST(BuiltInLibrary, GivesNoTwoTracksOfAnAlbumTheSameTitle) {
  std::set<std::tuple<std::string, std::string, std::string>> titles;
  for (const Track& track : builtInLibrary().tracks) {
    EXPECT_TRUE(titles.insert({track.artist, track.album, track.title}).second) << track.title;
  }
}

TEST(BuiltInLibrary, HasAnAlbumOfManyArtistsAndANameThatTwoAlbumsShare) {
  std::set<std::string> onSampler;
  std::set<std::string> atThePumpHouse;
  for (const Track& track : builtInLibrary().tracks) {
    if (track.album == "Ferry Terminal Sampler") onSampler.insert(track.artist);
    if (track.album == "Live at the Pump House") atThePumpHouse.insert(track.artist);
  }
  EXPECT_THAT(onSampler, SizeIs(12));
  EXPECT_THAT(atThePumpHouse, ElementsAre("The Second Lighthouse", "Wendell Inkpen Nonet"));
}

TEST(BuiltInLibrary, HasPlaylistsOfMusicFromEmptyToLong) {
  const MusicLibrary library = builtInLibrary();
  EXPECT_THAT(library.playlists, SizeIs(AllOf(Ge(8U), Le(40U))));
  std::set<size_t> sizes;
  for (const Playlist& playlist : library.playlists) {
    EXPECT_TRUE(isUtf8(playlist.name)) << playlist.name;
    sizes.insert(playlist.tracks.size());
    for (uint32_t index : playlist.tracks) {
      ASSERT_LT(index, library.tracks.size()) << playlist.name;
      EXPECT_EQ(library.tracks[index].kind, MediaKind::kMusic) << playlist.name;
    }
  }
  EXPECT_EQ(*sizes.begin(), 0U);
  EXPECT_THAT(sizes, Contains(1U));
  EXPECT_GT(*sizes.rbegin(), 200U);
}

TEST(BuiltInLibrary, HasPlaylistsOfRateChangesAndShortTracks) {
  const MusicLibrary library = builtInLibrary();
  ASSERT_EQ(library.playlists[0].name, "Rate Changes");
  EXPECT_THAT(library.playlists[0].tracks, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
  ASSERT_EQ(library.playlists[1].name, "Short Tracks");
  EXPECT_THAT(library.playlists[1].tracks, SizeIs(16));
  for (uint32_t index : library.playlists[1].tracks) {
    EXPECT_LE(library.tracks[index].lengthMs, 40000U);
  }
}

}  // namespace
}  // namespace simulator
