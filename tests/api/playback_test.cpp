#include <climits>

#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;

namespace playback {
namespace {

constexpr char kTracks[] = "05";

// ---------------------------------------------------------------- IpodSongPlay

class IpodSongPlayTest : public ConnectedApiTest {
 protected:
  std::vector<std::string> play(int index) {
    forgetEvents();
    EXPECT_EQ(IpodSongPlay(index), 0);
    return events();
  }

  /// Opens all tracks below the first of 12 albums: level 2.
  void openTracks(std::uint32_t records) {
    openTree(IPOD_ALBUMS, 12);
    count(kTracks, records);
    ASSERT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  }
};

TEST_F(IpodSongPlayTest, PlaysTheItem) {
  openTracks(30);
  EXPECT_THAT(play(0), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_THAT(play(29), ElementsAre(kPlayCurrentSelection + " 00 00 00 1D", kRefresh));
}

TEST_F(IpodSongPlayTest, MinusOnePlaysTheCurrentItem) {
  openTracks(30);
  IpodGetNextItem();
  IpodGetNextItem();
  ASSERT_EQ(browseTree.levels[2].index, 1);
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 01", kRefresh));
}

TEST_F(IpodSongPlayTest, MinusOneOnThePlayAllEntryPlaysFromTheFirstTrack) {
  openTracks(30);
  ASSERT_EQ(browseTree.levels[2].index, -1);
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, MinusOneOnThePlayAllTabPlaysFromTheFirstTrack) {
  openTracks(71);
  IpodGetPrevItem();
  IpodGetNextItem();
  ASSERT_EQ(browseTree.levels[2].index, -35);
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, MinusOneInAnEmptyListPlaysTheFirstTrack) {
  openTracks(0);
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, MinusOneWithTheIndexBeyondTheListPlaysTheFirstTrack) {
  openTracks(30);
  browseTree.levels[2].index = 30;
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, AnItemBeyondTheListIsPlayedIfTheSelectionHasIt) {
  openTracks(30);
  count(kTracks, 32);
  EXPECT_THAT(play(30),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 1E", kRefresh));
  EXPECT_THAT(play(31),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 1F", kRefresh));
}

TEST_F(IpodSongPlayTest, AnItemOfTheListIsPlayedEvenIfTheSelectionHasFewerTracks) {
  openTracks(30);
  count(kTracks, 3);
  EXPECT_THAT(play(29), ElementsAre(kPlayCurrentSelection + " 00 00 00 1D", kRefresh));
}

TEST_F(IpodSongPlayTest, AnItemBeyondTheSelectionPlaysTheFirstTrack) {
  openTracks(30);
  EXPECT_THAT(play(30),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_THAT(play(1000),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, AnItemBeyondAnUncountedSelectionPlaysTheFirstTrack) {
  openTracks(30);
  ipod.refuse(kCountRecords);
  EXPECT_THAT(play(30),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  count(kTracks, 0);
  EXPECT_THAT(play(30),
              ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, PostsTheMessageEvenIfTheIpodRefuses) {
  openTracks(30);
  ipod.refuse(kPlayCurrentSelection);
  EXPECT_THAT(play(3), ElementsAre(kPlayCurrentSelection + " 00 00 00 03", kRefresh));
}

TEST_F(IpodSongPlayTest, AnIndexBelowMinusOnePlaysFromTheFirstTrack) {
  openTracks(30);
  IpodGetNextItem();
  IpodGetNextItem();
  for (const int index : {-2, -35, INT_MIN})
    EXPECT_THAT(play(index),
                ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh))
        << index;
}

TEST_F(IpodSongPlayTest, WithoutATreePlaysTheSelection) {
  count(kTracks, 3);
  EXPECT_THAT(play(-1), ElementsAre(kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_THAT(play(2), ElementsAre(kCountTracks, kPlayCurrentSelection + " 00 00 00 02", kRefresh));
}

TEST_F(IpodSongPlayTest, PostsWhileItHoldsTheLock) {
  bool heldTheLock = false;
  desk.onMessage = [&] { heldTheLock = !libraryLockIsFree(); };
  IpodSongPlay(-1);
  EXPECT_TRUE(heldTheLock);
}

/// At level 1 the whole library is selected first, in the order of the list's type.
struct FirstLevel : NamedRow {
  int type;
  std::string selectLibrary;
};

class SongPlayAtTheFirstLevel : public IpodSongPlayTest,
                                public testing::WithParamInterface<FirstLevel> {};

TEST_P(SongPlayAtTheFirstLevel, SelectsTheLibraryAndTheTrackAndPlaysIt) {
  openTree(GetParam().type, 20);
  EXPECT_THAT(play(7), ElementsAre(kCountPlaylists, GetParam().selectLibrary, kCountTracks,
                                   kSelectDbRecord + " 05 00 00 00 07",
                                   kPlayCurrentSelection + " 00 00 00 07", kRefresh));
}

INSTANTIATE_TEST_SUITE_P(
    Types, SongPlayAtTheFirstLevel,
    testing::Values(FirstLevel{"Playlists", 1, kSelectSortDbRecord + " 01 00 00 00 00 04"},
                    FirstLevel{"Artists", 2, kSelectSortDbRecord + " 01 00 00 00 00 01"},
                    FirstLevel{"Albums", 3, kSelectSortDbRecord + " 01 00 00 00 00 03"},
                    FirstLevel{"Genres", 4, kSelectSortDbRecord + " 01 00 00 00 00 00"},
                    FirstLevel{"Tracks", 5, kSelectSortDbRecord + " 01 00 00 00 00 04"},
                    FirstLevel{"Type6", 6, kSelectSortDbRecord + " 01 00 00 00 00 FF"},
                    FirstLevel{"Type7", 7, kSelectSortDbRecord + " 01 00 00 00 00 FF"},
                    FirstLevel{"Type8", 8, kSelectSortDbRecord + " 01 00 00 00 00 FF"}),
    rowName<FirstLevel>);

TEST_F(IpodSongPlayTest, AtTheFirstLevelOnThePlayAllEntryPlaysFromTheFirstTrack) {
  openTree(IPOD_ARTISTS, 20);
  EXPECT_THAT(play(-1), ElementsAre(kCountPlaylists, kSelectSortDbRecord + " 01 00 00 00 00 01",
                                    kCountTracks, kSelectDbRecord + " 05 00 00 00 00",
                                    kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(IpodSongPlayTest, AtTheFirstLevelCountsTheTracksFirstForAnItemBeyondTheList) {
  openTree(IPOD_ARTISTS, 20);
  count(kTracks, 500);
  EXPECT_THAT(play(300),
              ElementsAre(kCountTracks, kCountPlaylists, kSelectSortDbRecord + " 01 00 00 00 00 01",
                          kCountTracks, kSelectDbRecord + " 05 00 00 01 2C",
                          kPlayCurrentSelection + " 00 00 01 2C", kRefresh));
}

TEST_F(IpodSongPlayTest, AtTheFirstLevelPlaysEvenIfTheIpodRefuses) {
  openTree(IPOD_ARTISTS, 20);
  for (const std::string& request :
       {kCountRecords, kSelectDbRecord, kSelectSortDbRecord, kPlayCurrentSelection})
    ipod.refuse(request);
  EXPECT_THAT(play(7), ElementsAre(kCountPlaylists, kSelectSortDbRecord + " 01 00 00 00 00 01",
                                   kCountTracks, kSelectDbRecord + " 05 00 00 00 07",
                                   kPlayCurrentSelection + " 00 00 00 07", kRefresh));
}

// ---------------------------------------------------------------- what plays

class PlayInformationTest : public ConnectedApiTest {};

TEST_F(PlayInformationTest, SongGetNumElemCountsTheTracksOfTheSelection) {
  count(kTracks, 300);
  int tracks = -5;
  EXPECT_EQ(IpodSongGetNumElem(&tracks), 0);
  EXPECT_EQ(tracks, 300);
  EXPECT_THAT(events(), ElementsAre(kCountTracks));
}

TEST_F(PlayInformationTest, SongGetNumElemWritesZeroWithoutAnAnswer) {
  ipod.refuse(kCountRecords);
  int tracks = -5;
  EXPECT_EQ(IpodSongGetNumElem(&tracks), 0);
  EXPECT_EQ(tracks, 0);
}

TEST_F(PlayInformationTest, GetTrackIndexReportsTheIndex) {
  playingIndex(0x01020304);
  int index = -5;
  EXPECT_EQ(IpodGetTrackIndex(&index), 1);
  EXPECT_EQ(index, 0x01020304);
  EXPECT_THAT(events(), ElementsAre(kGetCurrentTrackIndex));
}

TEST_F(PlayInformationTest, GetTrackIndexIsMinusOneWhenNothingPlays) {
  playingIndex(0xFFFFFFFF);
  int index = -5;
  EXPECT_EQ(IpodGetTrackIndex(&index), 1);
  EXPECT_EQ(index, -1);
}

TEST_F(PlayInformationTest, GetTrackIndexWithoutAnAnswerIsZeroAndWritesNothing) {
  for (const char* reply : {"00 02 05 00", "04 00 1F 00 00 01", "04 00 1F 00 00 00 01 00",
                            "04 00 1D 00 00 00 01", "04 00 01 04 00 1E"}) {
    ipod.answer(kGetCurrentTrackIndex, {reply});
    int index = -5;
    EXPECT_EQ(IpodGetTrackIndex(&index), 0) << reply;
    EXPECT_EQ(index, -5) << reply;
  }
}

TEST_F(PlayInformationTest, GetCurrentPlayStatusDistinguishesPlayingAndPaused) {
  const std::pair<const char*, int> kStates[] = {
      {"01", 1}, {"02", 2}, {"00", 0}, {"03", 0}, {"FF", 0}};
  for (const auto& [state, expected] : kStates) {
    playState(state, 1000);
    int status = -5;
    EXPECT_EQ(IpodGetCurrentPlayStatus(&status), 0);
    EXPECT_EQ(status, expected) << state;
  }
}

TEST_F(PlayInformationTest, GetCurrentPlayStatusSendsOneRequest) {
  playState("01", 1000);
  int status = 0;
  IpodGetCurrentPlayStatus(&status);
  EXPECT_THAT(events(), ElementsAre(kGetPlayStatus));
}

TEST_F(PlayInformationTest, GetCurrentPlayStatusIsZeroWithoutAnAnswer) {
  for (const char* reply : {"00 02 05 00", "04 00 1D 00 03 0D 40 00 00 03 E8",
                            "04 00 1D 00 03 0D 40 00 00 03 E8 01 00"}) {
    ipod.answer(kGetPlayStatus, {reply});
    int status = -5;
    EXPECT_EQ(IpodGetCurrentPlayStatus(&status), 0);
    EXPECT_EQ(status, 0) << reply;
  }
}

TEST_F(PlayInformationTest, GetCurrentTrackPositionIsInMilliseconds) {
  playState("01", 123456);
  int position = -5;
  EXPECT_EQ(IpodGetCurrentTrackPosition(&position), 0);
  EXPECT_EQ(position, 123456);
  EXPECT_THAT(events(), ElementsAre(kGetPlayStatus));
}

TEST_F(PlayInformationTest, GetCurrentTrackPositionIsZeroWithoutAnAnswer) {
  ipod.refuse(kGetPlayStatus);
  int position = -5;
  EXPECT_EQ(IpodGetCurrentTrackPosition(&position), 0);
  EXPECT_EQ(position, 0);
}

TEST_F(PlayInformationTest, ASilentIpodCostsOneSecondAndAnswersNothing) {
  const QuickTimeOuts quickTimeOuts;
  ipod.fallSilent();
  int value = -5;
  EXPECT_EQ(IpodGetTrackIndex(&value), 0);
  EXPECT_EQ(value, -5);
  EXPECT_EQ(quickTimeOuts.passed(), 1);
}

TEST_F(PlayInformationTest, NullPointersAreNotWrittenThrough) {
  count(kTracks, 300);
  playState("01", 1000);
  playingIndex(4);
  EXPECT_EQ(IpodSongGetNumElem(nullptr), 0);
  EXPECT_EQ(IpodGetCurrentPlayStatus(nullptr), 0);
  EXPECT_EQ(IpodGetCurrentTrackPosition(nullptr), 0);
  EXPECT_EQ(IpodGetTrackIndex(nullptr), 1);
  EXPECT_THAT(events(),
              ElementsAre(kCountTracks, kGetPlayStatus, kGetPlayStatus, kGetCurrentTrackIndex));
}

}  // namespace
}  // namespace playback
