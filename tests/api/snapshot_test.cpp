#include "api/api_test.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SnapshotTest : public ConnectedApiTest {
 protected:
  /// Opens genres, then albums level by level, each with another index, and takes the snapshot at
  /// the last level.
  void takeSnapshotAtLevel(int level) {
    openTree(IPOD_GENRES, 40);
    browseTree.levels[1].index = 11;
    count("03", 40);
    for (int depth = 2; depth <= level; ++depth) {
      ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
      browseTree.levels[depth].index = 10 + depth;
    }
    IpodValidateUpDownTree();
    forgetEvents();
  }

  Units first = untouched(8);
  Units second = untouched(8);
};

TEST_F(SnapshotTest, IsACopyOfTheWholeTree) {
  openTree(IPOD_ARTISTS, 71);
  IpodGetNextItem();
  IpodDisableTabVisualizationActive();
  count("03", 40);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
  forgetEvents();
  EXPECT_EQ(IpodValidateUpDownTree(), 0);
  EXPECT_EQ(treeText(upDownTree), treeText(browseTree));
  EXPECT_EQ(upDownTree.level, 2);
  EXPECT_EQ(levelText(upDownTree, 1),
            "type=2 count=71 index=0 start=0 end=35 tab=0 tabs=3 shown=0 split=1 playAll=1");
  EXPECT_EQ(levelText(upDownTree, 2),
            "type=3 count=40 index=-1 start=0 end=35 tab=-1 tabs=2 shown=1 split=1 playAll=1");
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(SnapshotTest, CopiesAllEightLevels) {
  for (int level = 0; level < 8; ++level) {
    browseTree.levels[level].count = 100 + level;
    browseTree.levels[level].type = static_cast<Category>(200 + level);
    browseTree.levels[level].index = 300 + level;
    browseTree.levels[level].end = 400 + level;
    browseTree.levels[level].start = 500 + level;
    browseTree.levels[level].tab = 600 + level;
    browseTree.levels[level].tabCount = 700 + level;
    browseTree.levels[level].tabsShown = static_cast<std::uint8_t>(10 + level);
    browseTree.levels[level].isTabbed = static_cast<std::uint8_t>(20 + level);
    browseTree.levels[level].hasPlayAll = static_cast<std::uint8_t>(30 + level);
  }
  browseTree.level = 7;
  IpodValidateUpDownTree();
  EXPECT_THAT(
      treeText(upDownTree),
      ElementsAre("level 7",
                  "type=200 count=100 index=300 start=500 end=400 tab=600 tabs=700 shown=10 "
                  "split=20 playAll=30",
                  "type=201 count=101 index=301 start=501 end=401 tab=601 tabs=701 shown=11 "
                  "split=21 playAll=31",
                  "type=202 count=102 index=302 start=502 end=402 tab=602 tabs=702 shown=12 "
                  "split=22 playAll=32",
                  "type=203 count=103 index=303 start=503 end=403 tab=603 tabs=703 shown=13 "
                  "split=23 playAll=33",
                  "type=204 count=104 index=304 start=504 end=404 tab=604 tabs=704 shown=14 "
                  "split=24 playAll=34",
                  "type=205 count=105 index=305 start=505 end=405 tab=605 tabs=705 shown=15 "
                  "split=25 playAll=35",
                  "type=206 count=106 index=306 start=506 end=406 tab=606 tabs=706 shown=16 "
                  "split=26 playAll=36",
                  "type=207 count=107 index=307 start=507 end=407 tab=607 tabs=707 shown=17 "
                  "split=27 playAll=37"));
}

TEST_F(SnapshotTest, StaysWhileTheHostBrowsesOn) {
  openTree(IPOD_ARTISTS, 9);
  IpodValidateUpDownTree();
  const std::vector<std::string> snapshot = treeText(upDownTree);
  IpodGetNextItem();
  openTree(IPOD_GENRES, 40);
  IpodGetParentItem();
  EXPECT_EQ(treeText(upDownTree), snapshot);
}

TEST_F(SnapshotTest, OfTheSameIpodStays) {
  openTree(IPOD_ARTISTS, 36);
  IpodValidateUpDownTree();
  const std::vector<std::string> tree = treeText(browseTree);
  for (const int sameIpod : {1, -1, 2, 256})
    IpodSetSameIpod(sameIpod);
  EXPECT_EQ(treeText(upDownTree), tree);
  EXPECT_EQ(treeText(browseTree), tree);
}

TEST_F(SnapshotTest, OfAnotherIpodIsClearedAndTheLiveTreeStays) {
  takeSnapshotAtLevel(7);
  const std::vector<std::string> tree = treeText(browseTree);
  IpodSetSameIpod(0);
  EXPECT_THAT(treeText(upDownTree),
              ElementsAre("level 0", kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel,
                          kUnknownLevel, kUnknownLevel, kUnknownLevel, kUnknownLevel));
  EXPECT_EQ(treeText(browseTree), tree);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(SnapshotTest, IsClearedWithoutTheLock) {
  openTree(IPOD_ARTISTS, 9);
  IpodValidateUpDownTree();
  ASSERT_EQ(WaitForSingleObject(libraryLock.handle(), 0), WAIT_OBJECT_0);
  IpodSetSameIpod(0);
  EXPECT_EQ(upDownTree.level, 0);
  ReleaseSemaphore(libraryLock.handle(), 1, nullptr);
}

// ---------------------------------------------------------------- IpodGetNumberOfPlaylist

TEST_F(SnapshotTest, GetNumberOfPlaylistCountsTheSnapshotsFirstType) {
  openTree(IPOD_PLAYLISTS, 9);
  IpodValidateUpDownTree();
  openTree(IPOD_ARTISTS, 3);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 9);
  EXPECT_THAT(events(), ElementsAre(kCountPlaylists));
}

TEST_F(SnapshotTest, GetNumberOfPlaylistUsesTheTypeAsTheCategory) {
  openTree(IPOD_TYPE_6, 9);
  IpodValidateUpDownTree();
  count("06", 300);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 300);
  EXPECT_THAT(events(), ElementsAre(kCountCategory6));
}

TEST_F(SnapshotTest, GetNumberOfPlaylistIsZeroWithoutAnAnswer) {
  openTree(IPOD_PLAYLISTS, 9);
  IpodValidateUpDownTree();
  ipod.refuse(kCountPlaylists);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 0);
}

TEST_F(SnapshotTest, GetNumberOfPlaylistTakesNoLock) {
  openTree(IPOD_PLAYLISTS, 9);
  IpodValidateUpDownTree();
  ASSERT_EQ(WaitForSingleObject(libraryLock.handle(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(IpodGetNumberOfPlaylist(), 9);
  ReleaseSemaphore(libraryLock.handle(), 1, nullptr);
}

// ---------------------------------------------------------------- IpodGetParentUpDownName

using ParentNameTest = SnapshotTest;

TEST_F(ParentNameTest, WithoutASnapshotWritesAndAsksNothing) {
  IpodSetSameIpod(0);
  openTree(IPOD_ARTISTS, 9);
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, untouched(8));
  EXPECT_EQ(second, untouched(8));
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(ParentNameTest, OfTheFirstListWritesNothing) {
  takeSnapshotAtLevel(1);
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, untouched(8));
  EXPECT_EQ(second, untouched(8));
  EXPECT_THAT(events(), testing::Not(testing::Contains(testing::StartsWith(kRetrieveRecords))));
}

TEST_F(ParentNameTest, OfTheFirstListUndoesAndRestoresNoSelection) {
  takeSnapshotAtLevel(1);
  IpodGetParentUpDownName(0, first.data(), second.data(), 8);
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " FF FF FF FF FF", kCountRecords + " FF",
                                    kSelectDbRecord + " FF FF FF FF FF"));
}

TEST_F(ParentNameTest, AtLevelTwoIsReadAndTheSelectionRestored) {
  takeSnapshotAtLevel(2);
  record("04", 11, "Rock'n'Roll");
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, holding("Rock'n'R", 8));
  EXPECT_EQ(second, holding("oll", 8));
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 04 FF FF FF FF", kCountGenres,
                                    kRetrieveRecords + " 04 00 00 00 0B 00 00 00 01",
                                    kSelectDbRecord + " 04 00 00 00 0B"));
}

TEST_F(ParentNameTest, AtLevelThreeRestoresTheSelectionInTheListsSortOrder) {
  takeSnapshotAtLevel(3);
  record("03", 12, "Parent");
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, holding("Parent", 8));
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 03 FF FF FF FF", kCountAlbums,
                                    kRetrieveRecords + " 03 00 00 00 0C 00 00 00 01",
                                    kSelectSortDbRecord + " 03 00 00 00 0C 03"));
}

TEST_F(ParentNameTest, BelowLevelThreeRestoresTheSelectionWithoutASortOrder) {
  for (int level = 4; level <= 7; ++level) {
    takeSnapshotAtLevel(level);
    const std::uint32_t parent = 10u + static_cast<std::uint32_t>(level) - 1;
    record("03", parent, "Parent");
    EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
    EXPECT_EQ(first, holding("Parent", 8));
    EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 03 FF FF FF FF", kCountAlbums,
                                      kRetrieveRecords + " 03" + word(parent) + " 00 00 00 01",
                                      kSelectDbRecord + " 03" + word(parent)));
    first = untouched(8);
  }
}

TEST_F(ParentNameTest, OfThePlayAllEntryIsThePlayAllMark) {
  openTree(IPOD_ARTISTS, 9);
  count("03", 9);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
  IpodValidateUpDownTree();
  forgetEvents();
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, (Units{0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF, 0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE}));
  EXPECT_EQ(second, untouched(8));
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 02 FF FF FF FF", kCountArtists,
                                    kSelectDbRecord + " 02 FF FF FF FF"));
}

TEST_F(ParentNameTest, OfAnEntryThatIsNotAnItemWritesNothing) {
  takeSnapshotAtLevel(2);
  for (const int index : {-1, 40, 1000, -35}) {
    upDownTree.levels[1].index = index;
    forgetEvents();
    EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
    EXPECT_EQ(first, untouched(8)) << index;
    EXPECT_EQ(requests().size(), 3u) << index;
  }
}

TEST_F(ParentNameTest, OfAnEntryInAnEmptyListWritesNothing) {
  openTree(IPOD_ARTISTS, 0);
  count("03", 0);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
  IpodValidateUpDownTree();
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, untouched(8));
}

TEST_F(ParentNameTest, WritesNothingAndRestoresTheSelectionIfTheIpodDoesNotSendTheName) {
  takeSnapshotAtLevel(2);
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, untouched(8));
  EXPECT_EQ(requests().back(), kSelectDbRecord + " 04 00 00 00 0B");
}

TEST_F(ParentNameTest, RefersToTheSnapshotWhateverTheHostBrowses) {
  takeSnapshotAtLevel(2);
  record("04", 11, "Rock");
  openTree(IPOD_TRACKS, 9);
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), second.data(), 8), 0);
  EXPECT_EQ(first, holding("Rock", 8));
}

TEST_F(ParentNameTest, NeedsNoBuffers) {
  takeSnapshotAtLevel(2);
  record("04", 11, "Rock'n'Roll");
  EXPECT_EQ(IpodGetParentUpDownName(0, nullptr, nullptr, 8), 0);
  EXPECT_EQ(IpodGetParentUpDownName(0, nullptr, second.data(), 8), 0);
  EXPECT_EQ(second, holding("oll", 8));
  EXPECT_EQ(IpodGetParentUpDownName(0, first.data(), nullptr, 8), 0);
  EXPECT_EQ(first, holding("Rock'n'R", 8));
}

TEST_F(ParentNameTest, IgnoresItsFirstArgument) {
  takeSnapshotAtLevel(2);
  record("04", 11, "Rock");
  EXPECT_EQ(IpodGetParentUpDownName(-12345, first.data(), nullptr, 8), 0);
  EXPECT_EQ(first, holding("Rock", 8));
}

}  // namespace
