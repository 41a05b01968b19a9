#include <climits>

#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class IpodGetFirstItemTest : public ConnectedApiTest {
 protected:
  /// Opens a list and returns the requests to the iPod.
  std::vector<std::string> open(int descend, int type, int tracksOfSelection) {
    forgetEvents();
    const int* const index = IpodGetFirstItem(descend, type, tracksOfSelection);
    EXPECT_EQ(index, browseTree.current().index.address());
    return events();
  }

  std::string level(int number) { return levelText(browseTree, number); }
};

// ---------------------------------------------------------------- a new tree

/// A top list of so many records and the state that it leaves.
struct TopList : NamedRow {
  int type;
  std::uint32_t records;
  std::string countRequest;
  const char* level;
};

class TopListTest : public IpodGetFirstItemTest, public testing::WithParamInterface<TopList> {};

TEST_P(TopListTest, IsCountedAndOpened) {
  ipod.answer(GetParam().countRequest, {"04 00 19" + word(GetParam().records)});
  EXPECT_THAT(open(0, GetParam().type, 0), ElementsAre(kResetDbSelection, GetParam().countRequest));
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(level(1), GetParam().level);
}

TEST_P(TopListTest, IgnoresTracksOfSelection) {
  ipod.answer(GetParam().countRequest, {"04 00 19" + word(GetParam().records)});
  EXPECT_THAT(open(0, GetParam().type, 1), ElementsAre(kResetDbSelection, GetParam().countRequest));
  EXPECT_EQ(level(1), GetParam().level);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, TopListTest,
    testing::Values(
        TopList{"NoArtists", 2, 0, kCountArtists,
                "type=2 count=0 index=-1 start=-1 end=0 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        TopList{"35Artists", 2, 35, kCountArtists,
                "type=2 count=35 index=-1 start=-1 end=35 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        TopList{"36Artists", 2, 36, kCountArtists,
                "type=2 count=36 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 playAll=1"},
        TopList{"70Artists", 2, 70, kCountArtists,
                "type=2 count=70 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 playAll=1"},
        TopList{"71Artists", 2, 71, kCountArtists,
                "type=2 count=71 index=-1 start=0 end=35 tab=-1 tabs=3 shown=1 split=1 playAll=1"},
        TopList{"35Albums", 3, 35, kCountAlbums,
                "type=3 count=35 index=-1 start=-1 end=35 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        TopList{"36Albums", 3, 36, kCountAlbums,
                "type=3 count=36 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 playAll=1"},
        TopList{"35Genres", 4, 35, kCountGenres,
                "type=4 count=35 index=0 start=0 end=35 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"36Genres", 4, 36, kCountGenres,
                "type=4 count=36 index=0 start=0 end=35 tab=0 tabs=2 shown=1 split=1 playAll=0"},
        TopList{"36Tracks", 5, 36, kCountTracks,
                "type=5 count=36 index=0 start=0 end=36 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"50000Tracks", 5, 50000, kCountTracks,
                "type=5 count=50000 index=0 start=0 end=50000 tab=-1 tabs=0 shown=0 split=0 "
                "playAll=0"},
        TopList{"71OfType6", 6, 71, kCountCategory7,
                "type=6 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"71OfType7", 7, 71, kCountCategory8,
                "type=7 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"71OfType8", 8, 71, kCountCategory6,
                "type=8 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"5Playlists", 1, 5, kCountPlaylists,
                "type=1 count=4 index=1 start=1 end=4 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"1Playlist", 1, 1, kCountPlaylists,
                "type=1 count=0 index=1 start=1 end=0 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"36Playlists", 1, 36, kCountPlaylists,
                "type=1 count=35 index=1 start=1 end=35 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        TopList{"37Playlists", 1, 37, kCountPlaylists,
                "type=1 count=36 index=1 start=0 end=35 tab=1 tabs=2 shown=1 split=1 playAll=0"},
        TopList{"72Playlists", 1, 72, kCountPlaylists,
                "type=1 count=71 index=1 start=0 end=35 tab=1 tabs=3 shown=1 split=1 playAll=0"},
        TopList{"MoreArtistsThanASignedCountHolds", 2, 0x80000000, kCountArtists,
                "type=2 count=-2147483648 index=-1 start=0 end=35 tab=-1 tabs=61356676 shown=1 "
                "split=1 playAll=1"},
        // As an unsigned number, the count -1 is greater than 35.
        TopList{"NoPlaylists", 1, 0, kCountPlaylists,
                "type=1 count=-1 index=1 start=0 end=35 tab=1 tabs=122713352 shown=1 split=1 "
                "playAll=0"}),
    rowName<TopList>);

TEST_F(IpodGetFirstItemTest, OpensAListThatTheIpodDoesNotCountEmpty) {
  ipod.refuse(kCountRecords);
  open(0, IPOD_ARTISTS, 0);
  EXPECT_EQ(level(1),
            "type=2 count=0 index=-1 start=-1 end=0 tab=-1 tabs=0 shown=0 split=0 playAll=1");
}

TEST_F(IpodGetFirstItemTest, OpensMinusOnePlaylistsIfTheIpodDoesNotCountThem) {
  ipod.refuse(kCountRecords);
  open(0, IPOD_PLAYLISTS, 0);
  EXPECT_EQ(browseTree.levels[1].count, -1);
  EXPECT_EQ(IpodGetNextItem(), nullptr);
  EXPECT_EQ(IpodGetPrevItem(), nullptr);
}

TEST_F(IpodGetFirstItemTest, SucceedsEvenIfTheIpodRefusesTheReset) {
  ipod.refuse(kResetDbSelection);
  count("02", 3);
  EXPECT_THAT(open(0, IPOD_ARTISTS, 0), ElementsAre(kResetDbSelection, kCountArtists));
  EXPECT_EQ(browseTree.levels[1].count, 3);
}

TEST_F(IpodGetFirstItemTest, KeepsLevelZeroWithoutAList) {
  count("02", 3);
  open(0, IPOD_ARTISTS, 0);
  EXPECT_EQ(browseTree.levels[0].index, -1);
  EXPECT_EQ(browseTree.levels[0].type, Category::kNone);
  EXPECT_EQ(browseTree.levels[0].count, -1);
  EXPECT_EQ(browseTree.levels[0].hasPlayAll, 0);
}

TEST_F(IpodGetFirstItemTest, StartsANewTreeFromAnyLevel) {
  count("02", 3);
  count("03", 3);
  open(0, IPOD_ARTISTS, 0);
  open(1, IPOD_ALBUMS, 0);
  open(1, IPOD_ALBUMS, 0);
  open(0, IPOD_ALBUMS, 0);
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(level(1),
            "type=3 count=3 index=-1 start=-1 end=3 tab=-1 tabs=0 shown=0 split=0 playAll=1");
}

TEST_F(IpodGetFirstItemTest, KeepsNothingOfALongerPreviousList) {
  openTree(IPOD_ARTISTS, 71);
  openTree(IPOD_GENRES, 12);
  EXPECT_EQ(levelText(browseTree, 1),
            "type=4 count=12 index=0 start=0 end=12 tab=-1 tabs=0 shown=0 split=0 playAll=0");
}

TEST_F(IpodGetFirstItemTest, KeepsNoTabOfALongerListBefore) {
  openTree(IPOD_GENRES, 71);
  EXPECT_EQ(browseTree.levels[1].tab, 0);
  openTree(IPOD_GENRES, 12);
  EXPECT_EQ(browseTree.levels[1].tab, -1);
}

TEST_F(IpodGetFirstItemTest, ReturnsNullAndChangesNothingForAnUnknownType) {
  count("02", 3);
  open(0, IPOD_ARTISTS, 0);
  const std::vector<std::string> tree = treeText(browseTree);
  forgetEvents();
  for (const int type : {0, 9, -1, 256 + 2, INT_MAX, INT_MIN}) {
    for (const int descend : {0, 1}) {
      for (const int tracksOfSelection : {0, 1})
        EXPECT_EQ(IpodGetFirstItem(descend, type, tracksOfSelection), nullptr) << type;
    }
  }
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(treeText(browseTree), tree);
}

// ---------------------------------------------------------------- below the current entry

/// A list below the sixth of 20 records, with the requests that open it.
struct LowerList : NamedRow {
  int parentType;
  int type;
  int tracksOfSelection;
  std::uint32_t records;
  std::string countParent;
  std::string select;
  std::string countRequest;
  const char* level;
};

class LowerListTest : public IpodGetFirstItemTest, public testing::WithParamInterface<LowerList> {};

TEST_P(LowerListTest, SelectsTheEntryAndIsCountedAndOpened) {
  const LowerList& row = GetParam();
  openTree(row.parentType, 20);
  browseTree.levels[1].index = 5;
  ipod.answer(row.countRequest, {"04 00 19" + word(row.records)});
  EXPECT_THAT(open(1, row.type, row.tracksOfSelection),
              ElementsAre(row.countParent, row.select, row.countRequest));
  EXPECT_EQ(browseTree.level, 2);
  EXPECT_EQ(level(2), row.level);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, LowerListTest,
    testing::Values(
        LowerList{"AlbumsOfAnArtist", 2, 3, 0, 9, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 03", kCountAlbums,
                  "type=3 count=9 index=-1 start=-1 end=9 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        LowerList{"ArtistsOfAGenre", 4, 2, 0, 36, kCountGenres,
                  kSelectSortDbRecord + " 04 00 00 00 05 01", kCountArtists,
                  "type=2 count=36 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 "
                  "playAll=1"},
        LowerList{"GenresOfAnArtist", 2, 4, 0, 36, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 00", kCountGenres,
                  "type=4 count=36 index=0 start=0 end=35 tab=0 tabs=2 shown=1 split=1 playAll=0"},
        LowerList{"PlaylistsAreAllOffered", 2, 1, 0, 5, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 04", kCountPlaylists,
                  "type=1 count=5 index=0 start=0 end=5 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        LowerList{"TracksOfAPlaylist", 1, 5, 0, 36, kCountPlaylists,
                  kSelectSortDbRecord + " 01 00 00 00 05 04", kCountTracks,
                  "type=5 count=36 index=0 start=0 end=36 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        LowerList{"AllTracksOfAnAlbum", 3, 5, 1, 35, kCountAlbums,
                  kSelectSortDbRecord + " 03 00 00 00 05 04", kCountTracks,
                  "type=5 count=35 index=-1 start=-1 end=35 tab=-1 tabs=0 shown=0 split=0 "
                  "playAll=1"},
        LowerList{"ManyTracksOfAnArtist", 2, 5, 1, 71, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 04", kCountTracks,
                  "type=5 count=71 index=-1 start=0 end=35 tab=-1 tabs=3 shown=1 split=1 "
                  "playAll=1"},
        LowerList{"AllTracksWhateverTheType", 2, 3, 1, 9, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 04", kCountTracks,
                  "type=5 count=9 index=-1 start=-1 end=9 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        LowerList{"AllTracksForAnyValueButZero", 2, 4, -1, 9, kCountArtists,
                  kSelectSortDbRecord + " 02 00 00 00 05 04", kCountTracks,
                  "type=5 count=9 index=-1 start=-1 end=9 tab=-1 tabs=0 shown=0 split=0 playAll=1"},
        LowerList{"Type6KeepsItsCategory", 6, 6, 0, 71, kCountCategory6,
                  kSelectSortDbRecord + " 06 00 00 00 05 FF", kCountCategory6,
                  "type=6 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        LowerList{"Type7KeepsItsCategory", 7, 7, 0, 71, kCountCategory7,
                  kSelectSortDbRecord + " 07 00 00 00 05 FF", kCountCategory7,
                  "type=7 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 playAll=0"},
        LowerList{"Type8KeepsItsCategory", 8, 8, 0, 71, kCountCategory8,
                  kSelectSortDbRecord + " 08 00 00 00 05 FF", kCountCategory8,
                  "type=8 count=71 index=0 start=0 end=71 tab=-1 tabs=0 shown=0 split=0 "
                  "playAll=0"}),
    rowName<LowerList>);

TEST_F(IpodGetFirstItemTest, DescendsForAnyValueButZero) {
  openTree(IPOD_ARTISTS, 3);
  count("03", 3);
  open(-1, IPOD_ALBUMS, 0);
  EXPECT_EQ(browseTree.level, 2);
  open(256, IPOD_ALBUMS, 0);
  EXPECT_EQ(browseTree.level, 3);
}

TEST_F(IpodGetFirstItemTest, BelowThePlayAllEntrySelectsNoRecord) {
  openTree(IPOD_ARTISTS, 3);
  count("03", 3);
  EXPECT_THAT(open(1, IPOD_ALBUMS, 0),
              ElementsAre(kCountArtists, kSelectSortDbRecord + " 02 FF FF FF FF 03", kCountAlbums));
}

TEST_F(IpodGetFirstItemTest, BelowATabbedListBeforeTheFirstMoveOpensItsFirstEntry) {
  openTree(IPOD_ARTISTS, 36);
  EXPECT_EQ(open(1, IPOD_ALBUMS, 0)[1], kSelectSortDbRecord + " 02 FF FF FF FF 03");
  openTree(IPOD_GENRES, 36);
  EXPECT_EQ(open(1, IPOD_ARTISTS, 0)[1], kSelectSortDbRecord + " 04 00 00 00 00 01");
  openTree(IPOD_PLAYLISTS, 37);
  EXPECT_EQ(open(1, IPOD_TRACKS, 0)[1], kSelectSortDbRecord + " 01 00 00 00 01 04");
}

TEST_F(IpodGetFirstItemTest, SelectsNoRecordBelowLevelZero) {
  count("03", 3);
  EXPECT_THAT(
      open(1, IPOD_ALBUMS, 0),
      ElementsAre(kCountRecords + " FF", kSelectDbRecord + " FF FF FF FF FF", kCountAlbums));
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(level(1),
            "type=3 count=3 index=-1 start=-1 end=3 tab=-1 tabs=0 shown=0 split=0 playAll=1");
}

TEST_F(IpodGetFirstItemTest, DescendsEvenIfTheIpodRefuses) {
  openTree(IPOD_ARTISTS, 3);
  ipod.refuse(kCountRecords);
  ipod.refuse(kSelectSortDbRecord);
  EXPECT_THAT(open(1, IPOD_ALBUMS, 0),
              ElementsAre(kCountArtists, kSelectSortDbRecord + " 02 FF FF FF FF 03", kCountAlbums));
  EXPECT_EQ(level(2),
            "type=3 count=0 index=-1 start=-1 end=0 tab=-1 tabs=0 shown=0 split=0 playAll=1");
}

TEST_F(IpodGetFirstItemTest, LeavesTheLevelAboveAsItIs) {
  openTree(IPOD_ARTISTS, 36);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  IpodGetNextItem();
  const std::string above = level(1);
  count("03", 3);
  open(1, IPOD_ALBUMS, 0);
  EXPECT_EQ(level(1), above);
}

TEST_F(IpodGetFirstItemTest, DescendsToLevelSevenAndNoFurther) {
  openTree(IPOD_GENRES, 9);
  count("04", 9);
  for (int depth = 2; depth <= 7; ++depth) {
    browseTree.levels[depth - 1].index = depth;
    EXPECT_THAT(
        open(1, IPOD_GENRES, 0),
        ElementsAre(kCountGenres, kSelectSortDbRecord + " 04" + word(std::uint32_t(depth)) + " 00",
                    kCountGenres));
    EXPECT_EQ(browseTree.level, depth);
    EXPECT_EQ(level(depth),
              "type=4 count=9 index=0 start=0 end=9 tab=-1 tabs=0 shown=0 split=0 playAll=0");
  }
  const std::vector<std::string> tree = treeText(browseTree);
  forgetEvents();
  EXPECT_EQ(IpodGetFirstItem(1, IPOD_GENRES, 0), nullptr);
  EXPECT_EQ(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  EXPECT_THAT(events(), IsEmpty());
  EXPECT_EQ(treeText(browseTree), tree);
}

TEST_F(IpodGetFirstItemTest, StartsANewTreeAtLevelSeven) {
  openTree(IPOD_GENRES, 9);
  for (int depth = 2; depth <= 7; ++depth)
    open(1, IPOD_GENRES, 0);
  EXPECT_THAT(open(0, IPOD_GENRES, 0), ElementsAre(kResetDbSelection, kCountGenres));
  EXPECT_EQ(browseTree.level, 1);
}

}  // namespace
