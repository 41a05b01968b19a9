#include <algorithm>

#include "api/api_test.h"
#include "support/row_name.h"

using namespace ipodctl;

using testing::ElementsAre;
using testing::IsEmpty;

namespace group_step {
namespace {

constexpr int kPreviousGroup = 12;
constexpr int kNextGroup = 13;
constexpr char kTracks[] = "05";

class GroupStepTest : public ConnectedApiTest {
 protected:
  std::vector<std::string> step(int code) {
    forgetEvents();
    EXPECT_EQ(IpodCommand(code), 0);
    return events();
  }
};

// ---------------------------------------------------------------- among all tracks

class AmongTracksTest : public GroupStepTest {
 protected:
  /// The events of a step without the count of the tracks.
  std::vector<std::string> walk(int code) {
    std::vector<std::string> happened = step(code);
    happened.erase(std::remove(happened.begin(), happened.end(), kCountTracks), happened.end());
    return happened;
  }

  /// The playing list's artists, one a track, in the tree of artists.
  void listArtists(const std::vector<std::string>& names) {
    list(2, kGetTrackArtist, "04 00 23", names);
  }

  /// Its albums, in the tree of albums.
  void listAlbums(const std::vector<std::string>& names) {
    list(3, kGetTrackAlbum, "04 00 25", names);
  }

 private:
  void list(int type, const std::string& request, const std::string& reply,
            const std::vector<std::string>& names) {
    openTree(type, 12);
    IpodValidateUpDownTree();
    count(kTracks, static_cast<std::uint32_t>(names.size()));
    std::uint32_t index = 0;
    for (const std::string& name : names) {
      ipod.answer(request + word(index), {reply + textBytes(name)});
      ++index;
    }
  }
};

TEST_F(AmongTracksTest, ReadsTheIndexItsNameAndTheTrackCountInThisOrder) {
  listArtists({"Abba", "Beck"});
  playingIndex(0);
  EXPECT_THAT(step(kNextGroup), ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 00",
                                            kCountTracks, kGetTrackArtist + " 00 00 00 01",
                                            kPlayCurrentSelection + " 00 00 00 01", kRefresh));
}

TEST_F(AmongTracksTest, NextPlaysTheFirstTrackOfTheNextArtist) {
  listArtists({"Abba", "Abba", "Abba", "Beck", "Cher"});
  playingIndex(1);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 03",
                          kPlayCurrentSelection + " 00 00 00 03", kRefresh));
}

TEST_F(AmongTracksTest, NextPlaysTheFirstTrackOfTheNextAlbum) {
  listAlbums({"Ants", "Ants", "Bees"});
  playingIndex(0);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackAlbum + " 00 00 00 00",
                          kGetTrackAlbum + " 00 00 00 01", kGetTrackAlbum + " 00 00 00 02",
                          kPlayCurrentSelection + " 00 00 00 02", kRefresh));
}

TEST_F(AmongTracksTest, NextWrapsFromTheLastTrackToTheFirst) {
  listArtists({"Abba", "Beck", "Beck"});
  playingIndex(1);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 00",
                          kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(AmongTracksTest, PreviousPlaysTheFirstTrackOfThePreviousArtist) {
  listArtists({"Abba", "Beck", "Beck", "Cher"});
  playingIndex(3);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 03",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 00", kPlayCurrentSelection + " 00 00 00 01",
                          kRefresh));
}

TEST_F(AmongTracksTest, PreviousPlaysTheFirstTrackOfThePreviousAlbum) {
  listAlbums({"Ants", "Bees", "Bees", "Cats"});
  playingIndex(3);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackAlbum + " 00 00 00 03",
                          kGetTrackAlbum + " 00 00 00 02", kGetTrackAlbum + " 00 00 00 01",
                          kGetTrackAlbum + " 00 00 00 00", kPlayCurrentSelection + " 00 00 00 01",
                          kRefresh));
}

TEST_F(AmongTracksTest, PreviousLeavesThePlayingGroupFirst) {
  listArtists({"Abba", "Beck", "Cher", "Cher"});
  playingIndex(3);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 03",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 00", kPlayCurrentSelection + " 00 00 00 01",
                          kRefresh));
}

TEST_F(AmongTracksTest, PreviousWrapsFromTheFirstTrackToTheLast) {
  listArtists({"Abba", "Beck", "Cher", "Cher"});
  playingIndex(0);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 00",
                          kGetTrackArtist + " 00 00 00 03", kGetTrackArtist + " 00 00 00 02",
                          kGetTrackArtist + " 00 00 00 01", kPlayCurrentSelection + " 00 00 00 02",
                          kRefresh));
}

TEST_F(AmongTracksTest, PreviousWrapsWhenItStepsForwardFromTheLastTrack) {
  listArtists({"Abba", "Beck", "Beck", "Cher"});
  playingIndex(1);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 00", kGetTrackArtist + " 00 00 00 03",
                          kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(AmongTracksTest, PreviousPlaysTheFirstTrackOfTheOnlyOtherGroup) {
  listArtists({"Abba", "Beck", "Beck", "Beck"});
  playingIndex(0);
  const std::vector<std::string> happened = walk(kPreviousGroup);
  EXPECT_THAT(happened, testing::Contains(kPlayCurrentSelection + " 00 00 00 01"));
  EXPECT_EQ(happened.back(), kRefresh);
}

TEST_F(AmongTracksTest, PreviousEndsAfterARoundWhenTheListHasBecomeShorterThanTheIndex) {
  listArtists({"Beck", "Beck", "Beck"});
  ipod.answer(kGetTrackArtist + " 00 00 00 07", {"04 00 23 41 62 62 61 00"});
  playingIndex(7);
  EXPECT_THAT(walk(kPreviousGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 07",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 00", kPlayCurrentSelection + " 00 00 00 00",
                          kRefresh));
}

TEST_F(AmongTracksTest, TracksWithoutANameFormAGroup) {
  listArtists({"Abba", "", "", "Cher"});
  ipod.answer(kGetTrackArtist + " 00 00 00 01", {"04 00 23 00 00"});
  ipod.answer(kGetTrackArtist + " 00 00 00 02", {"04 00 23 00 00"});
  playingIndex(1);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 03",
                          kPlayCurrentSelection + " 00 00 00 03", kRefresh));
}

TEST_F(AmongTracksTest, ATrackWithoutANameIsInAnotherGroupThanOneWithAName) {
  listArtists({"Abba", "", "Abba"});
  ipod.answer(kGetTrackArtist + " 00 00 00 01", {"04 00 23 00 00"});
  playingIndex(0);
  EXPECT_THAT(walk(kNextGroup), ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 00",
                                            kGetTrackArtist + " 00 00 00 01",
                                            kPlayCurrentSelection + " 00 00 00 01", kRefresh));
}

TEST_F(AmongTracksTest, ANameThatTheIpodRefusesIsEmpty) {
  listArtists({"Abba", "Beck", "Beck", "Abba"});
  ipod.refuse(kGetTrackArtist + " 00 00 00 01");
  ipod.refuse(kGetTrackArtist + " 00 00 00 02");
  playingIndex(1);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 03",
                          kPlayCurrentSelection + " 00 00 00 03", kRefresh));
}

/// Waits for a reply that does not arrive.
TEST_F(AmongTracksTest, ANameThatDoesNotArriveIsAnotherGroupThanOneWithAName) {
  const QuickTimeOuts quickTimeOuts;
  listArtists({"Abba", "Abba", "Abba"});
  ipod.ignore(kGetTrackArtist + " 00 00 00 01");
  playingIndex(0);
  EXPECT_THAT(walk(kNextGroup), ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 00",
                                            kGetTrackArtist + " 00 00 00 01",
                                            kPlayCurrentSelection + " 00 00 00 01", kRefresh));
}

/// Waits for a reply that does not arrive.
TEST_F(AmongTracksTest, ANameThatDoesNotArriveEndsTheStepInAGroupWithoutNames) {
  const QuickTimeOuts quickTimeOuts;
  listArtists({"Abba", "", "", "", "Cher"});
  for (const char* track : {"01", "02", "03"})
    ipod.answer(kGetTrackArtist + " 00 00 00 " + track, {"04 00 23 00 00"});
  ipod.answerOnce(kGetTrackArtist + " 00 00 00 02", {});
  playingIndex(1);
  EXPECT_THAT(walk(kNextGroup), ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                                            kGetTrackArtist + " 00 00 00 02"));
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kGetTrackArtist + " 00 00 00 03",
                          kGetTrackArtist + " 00 00 00 04", kPlayCurrentSelection + " 00 00 00 04",
                          kRefresh));
}

TEST_F(AmongTracksTest, NamesMustBeEqualToTheLastByte) {
  listArtists({"Abba", "Abbe", "Abb", "abba"});
  for (const std::uint32_t index : {0u, 1u, 2u}) {
    playingIndex(index);
    EXPECT_EQ(walk(kNextGroup).at(3), kPlayCurrentSelection + word(index + 1));
  }
}

TEST_F(AmongTracksTest, WithOneGroupOnlyReadsOneRoundAndDoesNothing) {
  listArtists({"Abba", "Abba", "Abba"});
  playingIndex(1);
  for (const int code : {kNextGroup, kPreviousGroup}) {
    const std::vector<std::string> happened = walk(code);
    EXPECT_EQ(std::count(happened.begin(), happened.end(), kRefresh), 0);
    EXPECT_THAT(happened,
                testing::Not(testing::Contains(testing::StartsWith(kPlayCurrentSelection))));
    EXPECT_THAT(happened, testing::Contains(kGetTrackArtist + " 00 00 00 00"));
    EXPECT_THAT(happened, testing::Contains(kGetTrackArtist + " 00 00 00 02"));
    EXPECT_LE(happened.size(), 5u);
  }
}

TEST_F(AmongTracksTest, WithOneTrackDoesNothing) {
  listArtists({"Abba"});
  playingIndex(0);
  for (const int code : {kNextGroup, kPreviousGroup}) {
    const std::vector<std::string> happened = walk(code);
    EXPECT_EQ(std::count(happened.begin(), happened.end(), kRefresh), 0);
    EXPECT_THAT(happened,
                testing::Not(testing::Contains(testing::StartsWith(kPlayCurrentSelection))));
  }
}

TEST_F(AmongTracksTest, WithoutAnIndexDoesNothing) {
  listArtists({"Abba", "Beck"});
  ipod.refuse(kGetCurrentTrackIndex);
  EXPECT_THAT(walk(kNextGroup), ElementsAre(kGetCurrentTrackIndex));
  EXPECT_THAT(walk(kPreviousGroup), ElementsAre(kGetCurrentTrackIndex));
}

/// Counts that do not fit the playing index.
struct OddCount : NamedRow {
  const char* countReply;
  std::uint32_t index;
};

class OddCountTest : public AmongTracksTest, public testing::WithParamInterface<OddCount> {};

TEST_P(OddCountTest, EndsTheWalkAfterOneRoundAtMost) {
  listArtists({"Abba", "Abba", "Abba"});
  ipod.answer(kGetTrackArtist, {"04 00 23 41 62 62 61 00"});
  ipod.answer(kCountTracks, {GetParam().countReply});
  playingIndex(GetParam().index);
  for (const int code : {kNextGroup, kPreviousGroup}) {
    const std::vector<std::string> happened = walk(code);
    EXPECT_LE(happened.size(), 2u + 4u) << testing::PrintToString(happened);
    EXPECT_THAT(happened,
                testing::Not(testing::Contains(testing::StartsWith(kPlayCurrentSelection))));
    EXPECT_THAT(happened, testing::Not(testing::Contains(kRefresh)));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Counts, OddCountTest,
    testing::Values(OddCount{"CountZero", "04 00 19 00 00 00 00", 0},
                    OddCount{"CountZeroIndexFive", "04 00 19 00 00 00 00", 5},
                    OddCount{"NoCount", "00 02 05 00", 5},
                    OddCount{"IndexIsTheCount", "04 00 19 00 00 00 03", 3},
                    OddCount{"IndexIsAboveTheCount", "04 00 19 00 00 00 03", 9},
                    OddCount{"IndexIsTheLargest", "04 00 19 00 00 00 03", 0x7FFFFFFF}),
    rowName<OddCount>);

TEST_F(AmongTracksTest, FromAnIndexBeyondTheLastTrackReadsEveryTrack) {
  listArtists({"Abba", "Abba", "Beck"});
  ipod.answer(kGetTrackArtist + " 00 00 00 09", {"04 00 23 41 62 62 61 00"});
  playingIndex(9);
  EXPECT_THAT(walk(kNextGroup),
              ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " 00 00 00 09",
                          kGetTrackArtist + " 00 00 00 00", kGetTrackArtist + " 00 00 00 01",
                          kGetTrackArtist + " 00 00 00 02", kPlayCurrentSelection + " 00 00 00 02",
                          kRefresh));
}

TEST_F(AmongTracksTest, WithNothingPlayingStepsForwardToTheFirstTrack) {
  listArtists({"Abba", "Abba", "Beck"});
  playingIndex(0xFFFFFFFF);
  EXPECT_THAT(walk(kNextGroup), ElementsAre(kGetCurrentTrackIndex, kGetTrackArtist + " FF FF FF FF",
                                            kGetTrackArtist + " 00 00 00 00",
                                            kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(AmongTracksTest, PostsTheMessageEvenIfTheIpodRefusesToPlay) {
  listArtists({"Abba", "Beck"});
  playingIndex(0);
  ipod.refuse(kPlayCurrentSelection);
  EXPECT_EQ(walk(kNextGroup).back(), kRefresh);
}

TEST_F(GroupStepTest, InAListOfAnotherTypeAtLevelOneDoesNothing) {
  for (const int type : {1, 4, 5, 6, 7, 8}) {
    openTree(type, 12);
    IpodValidateUpDownTree();
    playingIndex(0);
    EXPECT_THAT(step(kNextGroup), IsEmpty()) << type;
    EXPECT_THAT(step(kPreviousGroup), IsEmpty()) << type;
  }
}

TEST_F(GroupStepTest, WithoutASnapshotDoesNothing) {
  openTree(IPOD_ARTISTS, 12);
  EXPECT_THAT(step(kNextGroup), IsEmpty());
  EXPECT_THAT(step(kPreviousGroup), IsEmpty());
}

// ---------------------------------------------------------------- below a record of the first list

/// A step from one record of the first list to another, with the requests that it makes.
struct RecordStep : NamedRow {
  int type;
  std::uint32_t records;  ///< what the iPod counts of this type
  int from;
  int code;
  std::string countRequest;
  std::string selectRequest;
  int to;
};

class BelowARecordTest : public GroupStepTest {
 protected:
  /// The snapshot of the tracks below one record of the first list.
  void openBelow(int type, std::uint32_t records, int index) {
    openTree(type, records);
    browseTree.levels[1].index = index;
    ASSERT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
    IpodValidateUpDownTree();
    ipod.answer(kCountRecords, {"04 00 19" + word(records)});
  }
};

class RecordStepTest : public BelowARecordTest, public testing::WithParamInterface<RecordStep> {};

TEST_P(RecordStepTest, SelectsTheOtherRecordAndPlaysItsFirstTrack) {
  const RecordStep& row = GetParam();
  openBelow(row.type, row.records, row.from);
  EXPECT_THAT(step(row.code),
              ElementsAre(kResetDbSelection, row.countRequest, row.selectRequest, kCountTracks,
                          kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_EQ(upDownTree.levels[1].index, row.to);
  EXPECT_EQ(browseTree.levels[1].index, row.from);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, RecordStepTest,
    testing::Values(RecordStep{"NextAlbum", 3, 4, 1, 13, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 02 03", 2},
                    RecordStep{"NextAlbumThatIsTheLast", 3, 4, 2, 13, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 03 03", 3},
                    RecordStep{"PreviousAlbumThatIsTheFirst", 3, 4, 1, 12, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 00 03", 0},
                    RecordStep{"NextPlaylistThatIsTheLast", 1, 5, 2, 13, kCountPlaylists,
                               kSelectSortDbRecord + " 01 00 00 00 03 04", 3},
                    RecordStep{"PreviousPlaylistThatIsTheFirst", 1, 5, 2, 12, kCountPlaylists,
                               kSelectSortDbRecord + " 01 00 00 00 01 04", 1},
                    RecordStep{"AfterTheLastAlbumTheFirst", 3, 4, 3, 13, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 00 03", 0},
                    RecordStep{"PreviousAlbum", 3, 4, 2, 12, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 01 03", 1},
                    RecordStep{"BeforeTheFirstAlbumTheLast", 3, 4, 0, 12, kCountAlbums,
                               kSelectSortDbRecord + " 03 00 00 00 03 03", 3},
                    RecordStep{"NextArtist", 2, 300, 255, 13, kCountArtists,
                               kSelectSortDbRecord + " 02 00 00 01 00 01", 256},
                    RecordStep{"BeforeTheFirstArtistTheLast", 2, 300, 0, 12, kCountArtists,
                               kSelectSortDbRecord + " 02 00 00 01 2B 01", 299},
                    RecordStep{"NextGenre", 4, 4, 0, 13, kCountGenres,
                               kSelectSortDbRecord + " 04 00 00 00 01 00", 1},
                    RecordStep{"NextTrack", 5, 4, 0, 13, kCountTracks,
                               kSelectSortDbRecord + " 05 00 00 00 01 04", 1},
                    RecordStep{"NextOfType6", 6, 4, 0, 13, kCountCategory6,
                               kSelectSortDbRecord + " 06 00 00 00 01 FF", 1},
                    RecordStep{"NextOfType7", 7, 4, 3, 13, kCountCategory7,
                               kSelectSortDbRecord + " 07 00 00 00 00 FF", 0},
                    RecordStep{"NextOfType8", 8, 4, 0, 12, kCountCategory8,
                               kSelectSortDbRecord + " 08 00 00 00 03 FF", 3},
                    RecordStep{"NextPlaylist", 1, 5, 1, 13, kCountPlaylists,
                               kSelectSortDbRecord + " 01 00 00 00 02 04", 2},
                    RecordStep{"AfterTheLastPlaylistTheFirstThatIsNotTheLibrary", 1, 5, 3, 13,
                               kCountPlaylists, kSelectSortDbRecord + " 01 00 00 00 01 04", 1},
                    RecordStep{"PreviousPlaylist", 1, 5, 3, 12, kCountPlaylists,
                               kSelectSortDbRecord + " 01 00 00 00 02 04", 2},
                    RecordStep{"BeforeTheFirstPlaylistTheLast", 1, 5, 1, 12, kCountPlaylists,
                               kSelectSortDbRecord + " 01 00 00 00 03 04", 3}),
    rowName<RecordStep>);

TEST_F(BelowARecordTest, FromThePlayAllEntryDoesNothing) {
  openBelow(IPOD_ALBUMS, 4, -1);
  EXPECT_THAT(step(kNextGroup), ElementsAre(kResetDbSelection, kCountAlbums));
  EXPECT_THAT(step(kPreviousGroup), ElementsAre(kResetDbSelection, kCountAlbums));
  EXPECT_EQ(upDownTree.levels[1].index, -1);
}

TEST_F(BelowARecordTest, FromThePlayAllTabReachedByMovingPlaysAnyway) {
  openBelow(IPOD_ALBUMS, 40, -35);
  EXPECT_THAT(
      step(kNextGroup),
      ElementsAre(kResetDbSelection, kCountAlbums, kSelectSortDbRecord + " 03 FF FF FF DE 03",
                  kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  openBelow(IPOD_ALBUMS, 40, -35);
  EXPECT_THAT(
      step(kPreviousGroup),
      ElementsAre(kResetDbSelection, kCountAlbums, kSelectSortDbRecord + " 03 00 00 00 27 03",
                  kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(BelowARecordTest, StepsFromTheRecordOfTheLastStep) {
  openBelow(IPOD_ALBUMS, 4, 0);
  EXPECT_THAT(step(kNextGroup), testing::Contains(kSelectSortDbRecord + " 03 00 00 00 01 03"));
  EXPECT_THAT(step(kNextGroup), testing::Contains(kSelectSortDbRecord + " 03 00 00 00 02 03"));
  EXPECT_THAT(step(kPreviousGroup), testing::Contains(kSelectSortDbRecord + " 03 00 00 00 01 03"));
}

TEST_F(BelowARecordTest, StepsEvenIfTheIpodRefuses) {
  openBelow(IPOD_ALBUMS, 4, 1);
  for (const std::string& request :
       {kResetDbSelection, kSelectSortDbRecord, kCountTracks, kPlayCurrentSelection})
    ipod.refuse(request);
  EXPECT_THAT(
      step(kNextGroup),
      ElementsAre(kResetDbSelection, kCountAlbums, kSelectSortDbRecord + " 03 00 00 00 02 03",
                  kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_EQ(upDownTree.levels[1].index, 2);
}

TEST_F(BelowARecordTest, OnThePlayAllTabStepsFromTheTabsFirstIndex) {
  openTree(IPOD_ALBUMS, 71);
  IpodGetPrevItem();
  IpodGetNextItem();
  ASSERT_EQ(browseTree.levels[1].index, -35);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_TRACKS, 1), nullptr);
  IpodValidateUpDownTree();
  EXPECT_THAT(
      step(kNextGroup),
      ElementsAre(kResetDbSelection, kCountAlbums, kSelectSortDbRecord + " 03 FF FF FF DE 03",
                  kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_EQ(upDownTree.levels[1].index, -34);
}

/// A step from a record of a type for which the iPod refuses the count.
struct UncountedStep : NamedRow {
  int type;
  int from;
  int code;
  std::string countRequest;
  std::string selectRequest;
  int to;
};

class UncountedStepTest : public BelowARecordTest,
                          public testing::WithParamInterface<UncountedStep> {};

TEST_P(UncountedStepTest, StepsAsIfThereWereNoRecords) {
  const UncountedStep& row = GetParam();
  openBelow(row.type, 5, row.from);
  ipod.refuse(row.countRequest);
  EXPECT_THAT(step(row.code),
              ElementsAre(kResetDbSelection, row.countRequest, row.selectRequest, kCountTracks,
                          kPlayCurrentSelection + " 00 00 00 00", kRefresh));
  EXPECT_EQ(upDownTree.levels[1].index, row.to);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, UncountedStepTest,
    testing::Values(UncountedStep{"NextAlbum", 3, 1, 13, kCountAlbums,
                                  kSelectSortDbRecord + " 03 00 00 00 00 03", 0},
                    UncountedStep{"PreviousAlbum", 3, 2, 12, kCountAlbums,
                                  kSelectSortDbRecord + " 03 00 00 00 01 03", 1},
                    UncountedStep{"BeforeTheFirstAlbum", 3, 0, 12, kCountAlbums,
                                  kSelectSortDbRecord + " 03 FF FF FF FF 03", -1},
                    UncountedStep{"NextPlaylist", 1, 2, 13, kCountPlaylists,
                                  kSelectSortDbRecord + " 01 00 00 00 01 04", 1},
                    UncountedStep{"BeforeTheFirstPlaylist", 1, 1, 12, kCountPlaylists,
                                  kSelectSortDbRecord + " 01 FF FF FF FE 04", -2}),
    rowName<UncountedStep>);

TEST_F(BelowARecordTest, UsesTheFirstListAlsoFromDeeperLevels) {
  openTree(IPOD_GENRES, 4);
  count("02", 3);
  count("03", 3);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_ARTISTS, 0), nullptr);
  ASSERT_NE(IpodGetFirstItem(1, IPOD_ALBUMS, 0), nullptr);
  IpodValidateUpDownTree();
  count(kTracks, 7);
  EXPECT_THAT(
      step(kNextGroup),
      ElementsAre(kResetDbSelection, kCountGenres, kSelectSortDbRecord + " 04 00 00 00 01 00",
                  kCountTracks, kPlayCurrentSelection + " 00 00 00 00", kRefresh));
}

TEST_F(BelowARecordTest, RefersToTheSnapshotWhateverTheHostBrowses) {
  openBelow(IPOD_ALBUMS, 4, 1);
  openTree(IPOD_ARTISTS, 9);
  count("03", 4);
  EXPECT_THAT(step(kNextGroup), testing::Contains(kSelectSortDbRecord + " 03 00 00 00 02 03"));
}

}  // namespace
}  // namespace group_step
