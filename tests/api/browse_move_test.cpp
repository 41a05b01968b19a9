#include "api/api_test.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class BrowseMoveTest : public ConnectedApiTest {
 protected:
  std::string level() { return levelText(browseTree, browseTree.level); }

  /// The index after a step, read through the pointer that the export returns.
  static int next() { return indexAt(IpodGetNextItem()); }
  static int previous() { return indexAt(IpodGetPrevItem()); }

 private:
  static int indexAt(const int* index) {
    EXPECT_EQ(index, browseTree.current().index.address());
    return index == nullptr ? -9999 : *index;
  }
};

// ---------------------------------------------------------------- items

using ItemModeTest = BrowseMoveTest;

TEST_F(ItemModeTest, NextAndPreviousWrapAroundThroughThePlayAllEntry) {
  openTree(IPOD_ARTISTS, 3);
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(next(), 1);
  EXPECT_EQ(next(), 2);
  EXPECT_EQ(next(), -1);
  EXPECT_EQ(previous(), 2);
  EXPECT_EQ(previous(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(ItemModeTest, NextAndPreviousWrapAroundAListWithoutAPlayAllEntry) {
  openTree(IPOD_GENRES, 2);
  EXPECT_EQ(next(), 1);
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(previous(), 1);
  EXPECT_EQ(previous(), 0);
}

TEST_F(ItemModeTest, PlaylistsWrapAroundWithinTheirRange) {
  openTree(IPOD_PLAYLISTS, 5);
  EXPECT_EQ(next(), 2);
  EXPECT_EQ(next(), 3);
  EXPECT_EQ(next(), 1);
  EXPECT_EQ(previous(), 3);
}

TEST_F(ItemModeTest, AListOfOneItemStaysOnThatItem) {
  openTree(IPOD_GENRES, 1);
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(previous(), 0);
}

TEST_F(ItemModeTest, AnEmptyListDoesNotMove) {
  openTree(IPOD_ARTISTS, 0);
  const std::string before = level();
  EXPECT_EQ(IpodGetNextItem(), nullptr);
  EXPECT_EQ(IpodGetPrevItem(), nullptr);
  EXPECT_EQ(level(), before);
}

TEST_F(ItemModeTest, NextAndPreviousReturnNullWithoutAList) {
  EXPECT_EQ(IpodGetNextItem(), nullptr);
  EXPECT_EQ(IpodGetPrevItem(), nullptr);
  EXPECT_EQ(level(), kUnknownLevel);
}

// ---------------------------------------------------------------- tabs

using TabModeTest = BrowseMoveTest;

TEST_F(TabModeTest, NextOnArtistsVisitsTheTabsAndThePlayAllTab) {
  openTree(IPOD_ARTISTS, 71);
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(level(),
            "type=2 count=71 index=0 start=0 end=35 tab=0 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(next(), 35);
  EXPECT_EQ(level(),
            "type=2 count=71 index=35 start=35 end=70 tab=1 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(next(), 70);
  EXPECT_EQ(level(),
            "type=2 count=71 index=70 start=70 end=71 tab=2 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(next(), -35);
  EXPECT_EQ(level(),
            "type=2 count=71 index=-35 start=-35 end=0 tab=-1 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(level(),
            "type=2 count=71 index=0 start=0 end=35 tab=0 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(TabModeTest, NextOnGenresWrapsFromTheLastTabToTheFirst) {
  openTree(IPOD_GENRES, 36);
  EXPECT_EQ(next(), 35);
  EXPECT_EQ(level(),
            "type=4 count=36 index=35 start=35 end=36 tab=1 tabs=2 shown=1 split=1 playAll=0");
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(level(),
            "type=4 count=36 index=0 start=0 end=35 tab=0 tabs=2 shown=1 split=1 playAll=0");
}

TEST_F(TabModeTest, PreviousOnArtistsWrapsThroughThePlayAllTabToTheLast) {
  openTree(IPOD_ARTISTS, 71);
  EXPECT_EQ(previous(), 70);
  EXPECT_EQ(level(),
            "type=2 count=71 index=70 start=70 end=71 tab=2 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(previous(), 35);
  EXPECT_EQ(previous(), 0);
  EXPECT_EQ(previous(), -35);
  EXPECT_EQ(level(),
            "type=2 count=71 index=-35 start=-35 end=0 tab=-1 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_EQ(previous(), 70);
}

TEST_F(TabModeTest, PreviousOnGenresWrapsFromTheFirstTabToTheLast) {
  openTree(IPOD_GENRES, 36);
  EXPECT_EQ(previous(), 35);
  EXPECT_EQ(level(),
            "type=4 count=36 index=35 start=35 end=36 tab=1 tabs=2 shown=1 split=1 playAll=0");
  EXPECT_EQ(previous(), 0);
}

TEST_F(TabModeTest, PlaylistsBeginOnTheSecondTab) {
  openTree(IPOD_PLAYLISTS, 37);
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(next(), 35);
  EXPECT_EQ(level(),
            "type=1 count=36 index=35 start=35 end=36 tab=1 tabs=2 shown=1 split=1 playAll=0");
}

TEST_F(TabModeTest, PlaylistsReachTheWholeLibraryInTheFirstTabButNotTheLastPlaylist) {
  openTree(IPOD_PLAYLISTS, 37);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(previous(), 0);
  EXPECT_EQ(previous(), 34);
  IpodEnableTabVisualizationActive();
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(next(), 35);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(next(), 35);
}

TEST_F(TabModeTest, AFullLastTabEndsAtTheCount) {
  openTree(IPOD_GENRES, 70);
  EXPECT_EQ(next(), 35);
  EXPECT_EQ(level(),
            "type=4 count=70 index=35 start=35 end=70 tab=1 tabs=2 shown=1 split=1 playAll=0");
}

TEST_F(TabModeTest, TheLastTabOfTheLongestListEndsAtTheCount) {
  openTree(IPOD_ARTISTS, 0x7FFFFFFF);
  EXPECT_EQ(previous(), 2147483625);
  EXPECT_EQ(level(),
            "type=2 count=2147483647 index=2147483625 start=2147483625 end=2147483647 "
            "tab=61356675 tabs=61356676 shown=1 split=1 playAll=1");
}

TEST_F(TabModeTest, NextAndPreviousWrapAroundWithinAChosenTab) {
  openTree(IPOD_ARTISTS, 38);
  EXPECT_EQ(previous(), 35);
  EXPECT_EQ(IpodDisableTabVisualizationActive(), 0);
  EXPECT_EQ(next(), 36);
  EXPECT_EQ(next(), 37);
  EXPECT_EQ(next(), 35);
  EXPECT_EQ(previous(), 37);
  EXPECT_EQ(level(),
            "type=2 count=38 index=37 start=35 end=38 tab=1 tabs=2 shown=0 split=1 playAll=1");
}

TEST_F(TabModeTest, ThePlayAllTabsItemsAreThoseBeforeTheFirst) {
  openTree(IPOD_ARTISTS, 36);
  previous();
  EXPECT_EQ(next(), -35);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(next(), -34);
  EXPECT_EQ(previous(), -35);
  EXPECT_EQ(previous(), -1);
  EXPECT_EQ(next(), -35);
}

TEST_F(TabModeTest, AListJustOpenedShowsTheFirstTabsItemsWhenItsTabsAreHidden) {
  openTree(IPOD_ARTISTS, 36);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(next(), 0);
  EXPECT_EQ(previous(), 34);
}

// ---------------------------------------------------------------- showing the tabs

using TabVisualizationTest = BrowseMoveTest;

TEST_F(TabVisualizationTest, IsHiddenAndShownAgain) {
  openTree(IPOD_ARTISTS, 36);
  EXPECT_EQ(IpodIsTabActive(), 1);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
  EXPECT_EQ(IpodDisableTabVisualizationActive(), 0);
  EXPECT_EQ(IpodIsTabActive(), 1);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 0);
  EXPECT_EQ(IpodEnableTabVisualizationActive(), 0);
  EXPECT_EQ(IpodIsTabVisualizationActive(), 1);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(TabVisualizationTest, EnablingPrintsWhatItFinds) {
  openTree(IPOD_ARTISTS, 36);
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(printed([] { IpodEnableTabVisualizationActive(); }),
            "\nEnter IpodEnableTabVisualizationActive******\n"
            "\n ****IpodEnableTab[1] = 1******\n"
            "\nEnter if (ipodEnableTab[ipodLevel])******\n");
}

TEST_F(TabVisualizationTest, CannotBeEnabledInAListWithoutTabs) {
  openTree(IPOD_ARTISTS, 35);
  EXPECT_EQ(IpodIsTabActive(), 0);
  EXPECT_EQ(printed([] { EXPECT_EQ(IpodEnableTabVisualizationActive(), 0); }),
            "\nEnter IpodEnableTabVisualizationActive******\n"
            "\n ****IpodEnableTab[1] = 0******\n");
  EXPECT_EQ(IpodIsTabVisualizationActive(), 0);
}

TEST_F(TabVisualizationTest, BelongsToTheCurrentLevel) {
  openTree(IPOD_ARTISTS, 36);
  count("03", 3);
  IpodGetFirstItem(1, IPOD_ALBUMS, 0);
  EXPECT_EQ(IpodIsTabActive(), 0);
  EXPECT_EQ(printed([] { IpodEnableTabVisualizationActive(); }),
            "\nEnter IpodEnableTabVisualizationActive******\n"
            "\n ****IpodEnableTab[2] = 0******\n");
  IpodDisableTabVisualizationActive();
  EXPECT_EQ(browseTree.levels[1].tabsShown, 1);
}

TEST_F(TabVisualizationTest, DisablingPrintsNothing) {
  openTree(IPOD_ARTISTS, 36);
  EXPECT_EQ(printed([] { IpodDisableTabVisualizationActive(); }), "");
}

// ---------------------------------------------------------------- back

class IpodGetParentItemTest : public BrowseMoveTest {
 protected:
  void openAlbumsOfTheSecondArtist(std::uint32_t artists) {
    openTree(IPOD_ARTISTS, artists);
    browseTree.levels[1].index = 1;
    count("03", 3);
    ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
    forgetEvents();
  }
};

TEST_F(IpodGetParentItemTest, FromATabsItemsShowsTheTabsAgain) {
  openTree(IPOD_ARTISTS, 71);
  next();
  next();
  IpodDisableTabVisualizationActive();
  next();
  EXPECT_EQ(IpodGetParentItem(), nullptr);
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(level(),
            "type=2 count=71 index=36 start=35 end=70 tab=1 tabs=3 shown=1 split=1 playAll=1");
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetParentItemTest, FromTheTabsLeavesTheList) {
  openTree(IPOD_ARTISTS, 71);
  EXPECT_EQ(IpodGetParentItem(), nullptr);
  EXPECT_EQ(browseTree.level, 0);
  EXPECT_EQ(levelText(browseTree, 1),
            "type=-1 count=71 index=-1 start=-1 end=-1 tab=-1 tabs=-1 shown=0 split=0 playAll=0");
}

TEST_F(IpodGetParentItemTest, FromLevelOneLeavesTheTree) {
  openTree(IPOD_GENRES, 12);
  EXPECT_EQ(IpodGetParentItem(), nullptr);
  EXPECT_EQ(browseTree.level, 0);
  EXPECT_EQ(levelText(browseTree, 1),
            "type=-1 count=12 index=-1 start=-1 end=-1 tab=-1 tabs=-1 shown=0 split=0 playAll=0");
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetParentItemTest, FromLevelTwoUndoesTheSelectionAndReturnsTheParentsIndex) {
  openAlbumsOfTheSecondArtist(12);
  const std::string above = levelText(browseTree, 1);
  EXPECT_EQ(IpodGetParentItem(), browseTree.levels[1].index.address());
  EXPECT_EQ(browseTree.level, 1);
  EXPECT_EQ(level(), above);
  EXPECT_EQ(levelText(browseTree, 2),
            "type=-1 count=3 index=-1 start=-1 end=-1 tab=-1 tabs=-1 shown=0 split=0 playAll=0");
  EXPECT_THAT(events(), ElementsAre(kSelectDbRecord + " 02 FF FF FF FF", kCountArtists));
}

TEST_F(IpodGetParentItemTest, ReturnsToATabsItemsAsTheyWere) {
  openTree(IPOD_ARTISTS, 36);
  next();
  IpodDisableTabVisualizationActive();
  next();
  const std::string above = level();
  count("03", 3);
  IpodGetFirstItem(1, IPOD_ALBUMS, 0);
  const int* const index = IpodGetParentItem();
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(*index, 1);
  EXPECT_EQ(level(), above);
}

TEST_F(IpodGetParentItemTest, SucceedsEvenIfTheIpodRefuses) {
  openAlbumsOfTheSecondArtist(12);
  ipod.refuse(kSelectDbRecord);
  ipod.refuse(kCountRecords);
  const int* const index = IpodGetParentItem();
  ASSERT_NE(index, nullptr);
  EXPECT_EQ(*index, 1);
  EXPECT_EQ(browseTree.levels[1].count, 12);
}

TEST_F(IpodGetParentItemTest, WithoutATreeStaysAtLevelZero) {
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(IpodGetParentItem(), nullptr);
    EXPECT_EQ(browseTree.level, 0);
  }
  EXPECT_EQ(level(), kUnknownLevel);
  EXPECT_THAT(events(), IsEmpty());
}

TEST_F(IpodGetParentItemTest, ClimbsFromLevelSevenToLevelZero) {
  openTree(IPOD_GENRES, 9);
  for (int depth = 2; depth <= 7; ++depth)
    ASSERT_NE(IpodGetFirstItem(1, IPOD_GENRES, 0), nullptr);
  for (int depth = 6; depth >= 1; --depth) {
    EXPECT_EQ(IpodGetParentItem(), browseTree.levels[depth].index.address());
    EXPECT_EQ(browseTree.level, depth);
  }
  EXPECT_EQ(IpodGetParentItem(), nullptr);
  EXPECT_EQ(browseTree.level, 0);
}

}  // namespace
