#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class BrowseQueryTest : public ConnectedApiTest {
 protected:
  /// A list below the first list's third item.
  void descend(int type, int tracksOfSelection) {
    browseTree.levels[1].index = 2;
    ASSERT_NE(IpodGetFirstItem(1, type, tracksOfSelection), nullptr);
    forgetEvents();
  }
};

// ---------------------------------------------------------------- IpodCurItemIsEmpty

using CurItemIsEmptyTest = BrowseQueryTest;

TEST_F(CurItemIsEmptyTest, CountsTheTracksBelowTheItem) {
  openTree(IPOD_ARTISTS, 9);
  browseTree.levels[1].index = 4;
  count("05", 1);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 02 00 00 00 04", kCountTracks,
                                    kSelectDbRecord + " 02 FF FF FF FF"));
}

TEST_F(CurItemIsEmptyTest, IsOneWithoutTracksAndUndoesTheSelection) {
  openTree(IPOD_ARTISTS, 9);
  browseTree.levels[1].index = 4;
  count("05", 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 02 00 00 00 04", kCountTracks,
                                    kSelectDbRecord + " 02 FF FF FF FF"));
}

TEST_F(CurItemIsEmptyTest, IsOneIfTheIpodDoesNotCountTheTracks) {
  openTree(IPOD_ARTISTS, 9);
  ipod.refuse(kCountRecords);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
}

TEST_F(CurItemIsEmptyTest, OfThePlayAllEntrySelectsNoRecord) {
  openTree(IPOD_ARTISTS, 9);
  count("05", 300);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 02 FF FF FF FF", kCountTracks,
                                    kSelectDbRecord + " 02 FF FF FF FF"));
}

TEST_F(CurItemIsEmptyTest, UsesTheTypeAsTheCategory) {
  openTree(IPOD_TYPE_6, 9);
  count("05", 300);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 06 00 00 00 00", kCountTracks,
                                    kSelectDbRecord + " 06 FF FF FF FF"));
}

TEST_F(CurItemIsEmptyTest, OfAnEmptyListIsOneAndAsksNothing) {
  openTree(IPOD_ARTISTS, 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(CurItemIsEmptyTest, OfMinusOnePlaylistsIsOne) {
  openTree(IPOD_PLAYLISTS, 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(CurItemIsEmptyTest, WithoutAListIsOne) { EXPECT_EQ(IpodCurItemIsEmpty(), 1); }

TEST_F(CurItemIsEmptyTest, OfATabIsZeroAndAsksNothing) {
  openTree(IPOD_ARTISTS, 36);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(CurItemIsEmptyTest, IsReadForAnItemOfAChosenTab) {
  openTree(IPOD_ARTISTS, 36);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  count("05", 0);
  EXPECT_EQ(IpodCurItemIsEmpty(), 1);
}

TEST_F(CurItemIsEmptyTest, OfATrackIsZeroAndAsksNothing) {
  openTree(IPOD_TRACKS, 9);
  EXPECT_EQ(IpodCurItemIsEmpty(), 0);
  EXPECT_THAT(events(), IsEmpty());
}

// ---------------------------------------------------------------- IpodIsPlayAll

using IsPlayAllTest = BrowseQueryTest;

TEST_F(IsPlayAllTest, IsOneOnThePlayAllEntryOnly) {
  openTree(IPOD_ARTISTS, 2);
  EXPECT_EQ(IpodIsPlayAll(), 1);
  IpodGetNextItem();
  EXPECT_EQ(IpodIsPlayAll(), 0);
  IpodGetPrevItem();
  EXPECT_EQ(IpodIsPlayAll(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IsPlayAllTest, IsOneOnThePlayAllTabOnly) {
  openTree(IPOD_ARTISTS, 36);
  EXPECT_EQ(IpodIsPlayAll(), 1);
  IpodGetNextItem();
  EXPECT_EQ(IpodIsPlayAll(), 0);
  IpodGetNextItem();
  EXPECT_EQ(IpodIsPlayAll(), 0);
  IpodGetNextItem();
  EXPECT_EQ(IpodIsPlayAll(), 1);
}

TEST_F(IsPlayAllTest, AmongTheItemsOfThePlayAllTabIsOneAtMinusOneOnly) {
  openTree(IPOD_ARTISTS, 36);
  IpodGetPrevItem();
  IpodGetNextItem();
  ASSERT_EQ(browseTree.levels[1].index, -35);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(IpodIsPlayAll(), 0);
  IpodGetPrevItem();
  EXPECT_EQ(IpodIsPlayAll(), 1);
}

TEST_F(IsPlayAllTest, IsZeroInAListWithoutAPlayAllEntry) {
  openTree(IPOD_GENRES, 36);
  EXPECT_EQ(IpodIsPlayAll(), 0);
  browseTree.levels[1].index = -1;
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(IpodIsPlayAll(), 0);
}

TEST_F(IsPlayAllTest, IsOneInAnEmptyListOfArtists) {
  openTree(IPOD_ARTISTS, 0);
  EXPECT_EQ(IpodIsPlayAll(), 1);
}

TEST_F(IsPlayAllTest, IsZeroWithoutAList) { EXPECT_EQ(IpodIsPlayAll(), 0); }

// ---------------------------------------------------------------- what the list holds

using ListTypeTest = BrowseQueryTest;

TEST_F(ListTypeTest, BelongsToTheCurrentLevel) {
  for (int type = 1; type <= 8; ++type) {
    openTree(type, 3);
    EXPECT_EQ(IpodGetType(), type);
    EXPECT_EQ(IpodIsTrack(), type == 5 ? 1 : 0);
  }
  descend(IPOD_ALBUMS, 1);
  EXPECT_EQ(IpodGetType(), 5);
  EXPECT_EQ(IpodIsTrack(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(ListTypeTest, IsMinusOneAtLevelZero) {
  EXPECT_EQ(IpodGetType(), -1);
  EXPECT_EQ(IpodIsTrack(), 0);
  openTree(IPOD_TRACKS, 3);
  IpodGetParentItem();
  EXPECT_EQ(IpodGetType(), -1);
  EXPECT_EQ(IpodIsTrack(), 0);
}

// ---------------------------------------------------------------- IpodGetMediaFileCount

/// The records that the iPod counts and what the host gets.
struct MediaCount : NamedRow {
  int type;
  std::string countRequest;
  std::uint32_t records;
  int count;
};

class MediaFileCountTest : public BrowseQueryTest,
                           public testing::WithParamInterface<MediaCount> {};

TEST_P(MediaFileCountTest, CountsTheListsType) {
  openTree(GetParam().type, 3);
  ipod.answer(GetParam().countRequest, {"04 00 19" + word(GetParam().records)});
  int files = -77;
  EXPECT_EQ(IpodGetMediaFileCount(&files), 0);
  EXPECT_EQ(files, GetParam().count);
  EXPECT_THAT(events(), ElementsAre(GetParam().countRequest));
}

INSTANTIATE_TEST_SUITE_P(Types, MediaFileCountTest,
                         testing::Values(MediaCount{"Playlists", 1, kCountPlaylists, 5, 3},
                                         MediaCount{"TwoPlaylists", 1, kCountPlaylists, 2, 0},
                                         MediaCount{"OnePlaylist", 1, kCountPlaylists, 1, -1},
                                         MediaCount{"NoPlaylists", 1, kCountPlaylists, 0, 0},
                                         MediaCount{"Artists", 2, kCountArtists, 300, 300},
                                         MediaCount{"Albums", 3, kCountAlbums, 1, 1},
                                         MediaCount{"Genres", 4, kCountGenres, 0, 0},
                                         MediaCount{"Tracks", 5, kCountTracks, 5, 5},
                                         MediaCount{"Type6", 6, kCountCategory6, 5, 5},
                                         MediaCount{"Type7", 7, kCountCategory7, 5, 5},
                                         MediaCount{"Type8", 8, kCountCategory8, 5, 5}),
                         rowName<MediaCount>);

TEST_F(BrowseQueryTest, GetMediaFileCountIsZeroWithoutAnAnswer) {
  for (const int type : {1, 2}) {
    openTree(type, 3);
    ipod.refuse(kCountRecords);
    ipod.refuse(kCountPlaylists);
    ipod.refuse(kCountArtists);
    int files = -77;
    EXPECT_EQ(IpodGetMediaFileCount(&files), 0);
    EXPECT_EQ(files, 0);
  }
}

TEST_F(BrowseQueryTest, GetMediaFileCountIsZeroWithoutAListAndAsksNothing) {
  int files = -77;
  EXPECT_EQ(IpodGetMediaFileCount(&files), 0);
  EXPECT_EQ(files, 0);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(BrowseQueryTest, GetMediaFileCountWithoutAnOutputDoesNotWrite) {
  openTree(IPOD_ARTISTS, 3);
  EXPECT_EQ(IpodGetMediaFileCount(nullptr), 0);
  EXPECT_THAT(events(), ElementsAre(kCountArtists));
}

TEST_F(BrowseQueryTest, GetMediaFileCountWithoutAnOutputAndAListDoesNotWrite) {
  EXPECT_EQ(IpodGetMediaFileCount(nullptr), 0);
}

}  // namespace
