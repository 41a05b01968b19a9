// Every list that the host can open, walked whole and compared with the music that the iPod was
// given.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::MediaKind;
using simulator::MusicLibrary;
using simulator::Track;
using testing::ElementsAre;
using testing::IsEmpty;

Names albumsOfKind(const MusicLibrary& library, MediaKind kind) {
  return namesOf(tracksWhere(library, [&](const Track& track) { return track.kind == kind; }),
                 &Track::album);
}

class WholeLibrary : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(IpodConnect(), 1); }
  void TearDown() override { IpodDisconnect(); }

  Names topList(int type) { return wholeList(IpodGetFirstItem(0, type, 0)); }

  // Opens the record of a top list.
  const int* openRecord(int type, const std::string& name, int below) {
    const int* index = IpodGetFirstItem(0, type, 0);
    EXPECT_TRUE(goToItem(index, hostText(name))) << name;
    return IpodGetFirstItem(1, below, 0);
  }

  const MusicLibrary library = simulator::builtInLibrary();
  const Tracks music = musicOf(library);
  SessionIpod ipod;
};

// The first playlist, which is the whole library, and the last one are not offered.
TEST_F(WholeLibrary, OffersThePlaylistsBetweenTheFirstAndTheLastOne) {
  Names offered;
  for (size_t i = 0; i + 1 < library.playlists.size(); ++i)
    offered.push_back(hostText(library.playlists[i].name));
  EXPECT_EQ(topList(IPOD_PLAYLISTS), offered);
  EXPECT_EQ(valueOf(IpodGetMediaFileCount), static_cast<int>(library.playlists.size()) - 1);
}

TEST_F(WholeLibrary, ListsArtistsAlbumsAndGenresPageByPage) {
  const struct {
    int type;
    TextOfTrack text;
  } lists[] = {
      {IPOD_ARTISTS, &Track::artist}, {IPOD_ALBUMS, &Track::album}, {IPOD_GENRES, &Track::genre}};
  for (const auto& list : lists) {
    const Names names = namesOf(music, list.text);
    EXPECT_EQ(topList(list.type), hostTexts(names)) << list.type;
    EXPECT_EQ(valueOf(IpodGetMediaFileCount), static_cast<int>(names.size())) << list.type;
  }
}

TEST_F(WholeLibrary, ListsEveryTrackByArtist) {
  EXPECT_EQ(topList(IPOD_TRACKS), hostTexts(textsOf(byArtist(music), &Track::title)));
  EXPECT_EQ(valueOf(IpodSongGetNumElem), static_cast<int>(music.size()));
}

// The list is as long as the counted category, and its entries are those of the type's number.
TEST_F(WholeLibrary, ListsTheLastThreeTypesByTheirOwnNumberAsLongAsAnother) {
  const Names composers = hostTexts(namesOf(music, &Track::composer));
  const Names audiobooks = hostTexts(albumsOfKind(library, MediaKind::kAudiobook));
  const Names podcasts = hostTexts(albumsOfKind(library, MediaKind::kPodcast));
  const auto cut = [](Names names, size_t count) {
    names.resize(count);
    return names;
  };
  EXPECT_EQ(topList(IPOD_TYPE_6), cut(composers, audiobooks.size()));
  EXPECT_EQ(topList(IPOD_TYPE_7), cut(audiobooks, podcasts.size()));
  EXPECT_EQ(topList(IPOD_TYPE_8), cut(podcasts, composers.size()));
}

TEST_F(WholeLibrary, ListsTheAlbumsOfEveryArtist) {
  const int* index = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
  for (const std::string& artist : namesOf(music, &Track::artist)) {
    ASSERT_TRUE(goToItem(index, hostText(artist))) << artist;
    EXPECT_EQ(wholeList(IpodGetFirstItem(1, IPOD_ALBUMS, 0)),
              hostTexts(namesOf(musicWith(library, &Track::artist, artist), &Track::album)))
        << artist;
    ASSERT_NE(IpodGetParentItem(), nullptr);
    IpodEnableTabVisualizationActive();
  }
}

TEST_F(WholeLibrary, ListsTheArtistsOfAGenreAndTheTracksOfAComposer) {
  EXPECT_EQ(wholeList(openRecord(IPOD_GENRES, "Chanson", IPOD_ARTISTS)),
            (Names{"\xC9lo\xEFse Carrefour", "Jean-No\xEBl Ardoise", "Les Parapluies Press\xE9s",
                   "Margot Br\xFBlefer"}));
  const std::string composer = namesOf(music, &Track::composer).front();
  EXPECT_EQ(
      wholeList(openRecord(IPOD_TYPE_6, composer, IPOD_TRACKS)),
      hostTexts(textsOf(byTitle(musicWith(library, &Track::composer, composer)), &Track::title)));
}

TEST_F(WholeLibrary, ListsThePlaylistsTracksByTitle) {
  for (size_t i = 0; i + 1 < library.playlists.size(); ++i) {
    const Tracks tracks = byTitle(playlistTracks(library, i));
    const int* index = openRecord(IPOD_PLAYLISTS, library.playlists[i].name, IPOD_TRACKS);
    EXPECT_EQ(valueOf(IpodSongGetNumElem), static_cast<int>(tracks.size()));
    if (tracks.empty()) {
      EXPECT_EQ(IpodGetNextItem(), nullptr);
    } else {
      EXPECT_EQ(wholeList(index), hostTexts(textsOf(tracks, &Track::title)));
    }
  }
}

TEST_F(WholeLibrary, ListsAllTracksOfAGenreInTabsByTitle) {
  const int* index = IpodGetFirstItem(0, IPOD_GENRES, 0);
  ASSERT_TRUE(goToItem(index, "Electronic"));
  index = IpodGetFirstItem(1, IPOD_ALBUMS, 1);
  EXPECT_EQ(IpodIsTrack(), 1);
  EXPECT_EQ(IpodIsTabActive(), 1);
  EXPECT_EQ(
      wholeList(index),
      hostTexts(textsOf(byTitle(musicWith(library, &Track::genre, "Electronic")), &Track::title)));
}

TEST(Playlists, SayWhetherTheyLeadToTracks) {
  MusicLibrary library;
  library.tracks.resize(1);
  library.playlists = {{"Full", {0}}, {"Empty", {}}, {"Last", {}}};
  SessionIpod ipod({}, library);
  ASSERT_EQ(IpodConnect(), 1);
  const int* index = IpodGetFirstItem(0, IPOD_PLAYLISTS, 0);
  ASSERT_TRUE(goToItem(index, "Full"));
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  ASSERT_TRUE(goToItem(index, "Empty"));
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
  IpodDisconnect();
}

// 34, 35, 36, 70 and 71 artists, one track each.
TEST(ListsOfArtists, AreInTabsFrom36On) {
  const struct {
    int artists;
    int split;
    Names labels;
  } sizes[] = {{34, 0, {}},
               {35, 0, {}},
               {36, 1, {kPlayAll, "A100 - A134", "A135 - A135"}},
               {70, 1, {kPlayAll, "A100 - A134", "A135 - A169"}},
               {71, 1, {kPlayAll, "A100 - A134", "A135 - A169", "A170 - A170"}}};
  for (const auto& size : sizes) {
    MusicLibrary library;
    for (int i = 0; i < size.artists; ++i) {
      Track track;
      track.artist = "A" + std::to_string(100 + i) + " Band";
      library.tracks.push_back(track);
    }
    SessionIpod ipod({}, library);
    ASSERT_EQ(IpodConnect(), 1);
    const int* index = IpodGetFirstItem(0, IPOD_ARTISTS, 0);
    EXPECT_EQ(IpodIsTabActive(), size.split);
    EXPECT_EQ(size.split == 1 ? entriesOnce(index) : Names{}, size.labels);
    EXPECT_EQ(wholeList(index), namesOf(library.tracks, &Track::artist));
    IpodDisconnect();
  }
}

TEST(AnIpodWithoutMusic, HasEmptyLists) {
  MusicLibrary library;
  library.name = "Empty";
  SessionIpod ipod({}, library);
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(ipodName(), "Empty");
  for (int type = IPOD_ARTISTS; type <= IPOD_TYPE_8; ++type) {
    EXPECT_NE(IpodGetFirstItem(0, type, 0), nullptr);
    EXPECT_EQ(IpodGetNextItem(), nullptr) << type;
    EXPECT_EQ(IpodGetPrevItem(), nullptr) << type;
    EXPECT_EQ(itemName(), "") << type;
    EXPECT_EQ(IpodCurItemIsEmpty(), 1) << type;
  }
  IpodDisconnect();
}

}  // namespace
}  // namespace session
