#include <gtest/gtest.h>

#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

using Names = std::vector<std::string>;

Personality withoutCountRule() {
  Personality personality;
  personality.countBeforeSelect = false;
  return personality;
}

TEST(OutsideTheExtendedMode, CommandsAreABadParameter) {
  Bench bench;
  EXPECT_EQ(bench.ask("04 00 18 02"), Payloads{"04 00 01 04 00 18"});
  EXPECT_EQ(bench.ask("04 00 1C"), Payloads{"04 00 01 04 00 1C"});
}

TEST(OutsideTheExtendedMode, SomeModelsAreSilent) {
  Personality personality;
  personality.outsideExtendedMode = OutsideExtendedMode::kSilence;
  EXPECT_EQ(Bench(personality).ask("04 00 18 02"), Payloads{});
}

TEST(OutsideTheExtendedMode, ImageCommandsWorkUnlessTheModelForbidsIt) {
  EXPECT_EQ(Bench().ask("04 00 39"), Payloads{"04 00 3A 01 40 00 F0 02 01 40 00 F0 03"});
  Personality personality;
  personality.displayNeedsExtendedMode = true;
  EXPECT_EQ(Bench(personality).ask("04 00 39"), Payloads{"04 00 01 04 00 39"});
}

class ExtendedDatabaseTest : public testing::Test {
 protected:
  void SetUp() override { bench.enter(); }

  Bench bench;
};

TEST(ExtendedProtocolVersion, IsThatOfTheModel) {
  Personality personality;
  personality.lingoes[0x04] = {1, 12};
  Bench bench(personality);
  EXPECT_EQ(bench.ask("04 00 12"), Payloads{"04 00 01 04 00 12"}) << "outside the extended mode";
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 12"), Payloads{"04 00 13 01 0C"});
  EXPECT_EQ(bench.ask("04 00 12 00"), Payloads{"04 00 01 04 00 12"}) << "a byte too many";
}

TEST(ExtendedProtocolVersion, IsUnknownToAModelWithoutTheLingo) {
  Personality personality;
  personality.lingoes.erase(0x04);
  Bench bench(personality);
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 12"), Payloads{"04 00 01 05 00 12"});
}

TEST_F(ExtendedDatabaseTest, ReturnsTheVersionOfTheDefaultModel) {
  EXPECT_EQ(bench.ask("04 00 12"), Payloads{"04 00 13 01 0E"});
}

TEST_F(ExtendedDatabaseTest, ReturnsTheName) {
  EXPECT_EQ(bench.ask("04 00 14"), Payloads{"04 00 15 50 6F 64 00"});
}

TEST_F(ExtendedDatabaseTest, UnknownCommandIsAnsweredWithItsWholeId) {
  EXPECT_EQ(bench.ask("04 01 18"), Payloads{"04 00 01 05 01 18"});
}

TEST_F(ExtendedDatabaseTest, WrongSizeIsABadParameter) {
  EXPECT_EQ(bench.ask("04 00 18"), Payloads{"04 00 01 04 00 18"});
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00"), Payloads{"04 00 01 04 00 17"});
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 01 00"), Payloads{"04 00 01 04 00 1A"});
}

TEST_F(ExtendedDatabaseTest, CountsEveryCategory) {
  EXPECT_EQ(bench.ask("04 00 18 01"), Payloads{"04 00 19 00 00 00 03"});
  EXPECT_EQ(bench.ask("04 00 18 02"), Payloads{"04 00 19 00 00 00 03"});
  EXPECT_EQ(bench.ask("04 00 18 05"), Payloads{"04 00 19 00 00 00 05"});
  EXPECT_EQ(bench.ask("04 00 18 06"), Payloads{"04 00 19 00 00 00 02"});
  EXPECT_EQ(bench.ask("04 00 18 07"), Payloads{"04 00 19 00 00 00 01"});
  EXPECT_EQ(bench.ask("04 00 18 08"), Payloads{"04 00 19 00 00 00 01"});
}

TEST_F(ExtendedDatabaseTest, UnknownCategoryIsReported) {
  EXPECT_EQ(bench.ask("04 00 18 00"), Payloads{"04 00 01 01 00 18"});
  EXPECT_EQ(bench.ask("04 00 18 09"), Payloads{"04 00 01 01 00 18"});
  EXPECT_EQ(bench.ask("04 00 17 09 00 00 00 00"), Payloads{"04 00 01 01 00 17"});
  EXPECT_EQ(bench.ask("04 00 1A 09 00 00 00 00 00 00 00 01"), Payloads{"04 00 01 01 00 1A"});
  EXPECT_EQ(bench.ask("04 00 38 09 00 00 00 00 FF"), Payloads{"04 00 01 01 00 38"});
}

TEST_F(ExtendedDatabaseTest, SendsOneReplyForEachRecord) {
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 03"),
            (Payloads{"04 00 1B 00 00 00 00 41 6E 6E 61 00",
                      "04 00 1B 00 00 00 01 54 68 65 20 42 65 65 73 00",
                      "04 00 1B 00 00 00 02 43 61 72 6C 00"}));
}

TEST_F(ExtendedDatabaseTest, CountOfAllOnesSendsAllUpToTheEnd) {
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 01 FF FF FF FF"),
            (Payloads{"04 00 1B 00 00 00 01 54 68 65 20 42 65 65 73 00",
                      "04 00 1B 00 00 00 02 43 61 72 6C 00"}));
}

TEST_F(ExtendedDatabaseTest, RecordsOutOfRangeAreABadParameter) {
  const Payloads refused = {"04 00 01 04 00 1A"};
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 03 00 00 00 01"), refused);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 02 00 00 00 02"), refused);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 00 00 00 00 00"), refused);
  EXPECT_EQ(bench.ask("04 00 1A 02 FF FF FF FF 00 00 00 01"), refused);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 02 FF FF FF FE"), refused);
  EXPECT_EQ(bench.ask("04 00 1A 02 00 00 00 03 FF FF FF FF"), refused);
}

TEST_F(ExtendedDatabaseTest, FirstPlaylistHasTheIpodsName) {
  EXPECT_EQ(bench.list(1), (Names{"Pod", "Mix", "Empty"}));
}

TEST_F(ExtendedDatabaseTest, SelectingNarrowsWhatIsCounted) {
  bench.select(2, 0);
  EXPECT_EQ(bench.list(3), (Names{"First", "Second"}));
  bench.select(3, 1);
  EXPECT_EQ(bench.list(5), Names{"Charlie"});
}

TEST_F(ExtendedDatabaseTest, SelectionNeedsACountOfItsCategoryFirst) {
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00 00"), Payloads{"04 00 01 02 00 17"});
  EXPECT_EQ(bench.ask("04 00 38 02 00 00 00 00 04"), Payloads{"04 00 01 02 00 38"});
  bench.count(2);
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00 00"), Payloads{"04 00 01 00 00 17"});
}

TEST_F(ExtendedDatabaseTest, ResetClearsTheCountAndTheSelection) {
  bench.select(2, 0);
  EXPECT_EQ(bench.ask("04 00 16"), Payloads{"04 00 01 00 00 16"});
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00 00"), Payloads{"04 00 01 02 00 17"});
  EXPECT_EQ(bench.count(5), 5u);
}

TEST_F(ExtendedDatabaseTest, WideningNeedsNoCount) {
  EXPECT_EQ(bench.ask("04 00 17 02 FF FF FF FF"), Payloads{"04 00 01 00 00 17"});
  EXPECT_EQ(bench.ask("04 00 17 05 FF FF FF FF"), Payloads{"04 00 01 04 00 17"});
}

TEST_F(ExtendedDatabaseTest, IndexOutOfRangeIsABadParameter) {
  bench.count(2);
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00 03"), Payloads{"04 00 01 04 00 17"});
}

TEST_F(ExtendedDatabaseTest, SortedSelectionSortsTheTracks) {
  bench.count(1);
  EXPECT_EQ(bench.ask("04 00 38 01 00 00 00 00 06"), Payloads{"04 00 01 00 00 38"});
  EXPECT_EQ(bench.list(5), (Names{"Echo", "The Delta", "Able", "Baker", "Charlie"}));
  EXPECT_EQ(bench.ask("04 00 38 01 00 00 00 00 00"), Payloads{"04 00 01 00 00 38"});
  EXPECT_EQ(bench.list(5), (Names{"Echo", "Charlie", "Able", "Baker", "The Delta"}));
}

TEST_F(ExtendedDatabaseTest, SelectingATrackPlaysItWithinItsList) {
  bench.select(5, 3);
  const Player& player = bench.ipod.player();
  EXPECT_EQ(player.state(), PlayState::kPlaying);
  EXPECT_EQ(player.list().currentIndex(), 3u);
  EXPECT_EQ(player.list().size(), 5u);
  EXPECT_EQ(bench.count(5), 5u);
}

TEST_F(ExtendedDatabaseTest, SelectingASortedTrackPlaysTheOneThatWasListed) {
  bench.count(1);
  bench.ask("04 00 38 01 00 00 00 00 06");
  bench.count(5);
  bench.ask("04 00 38 05 00 00 00 01 FF");
  EXPECT_EQ(bench.ipod.library().tracks[*bench.ipod.player().currentTrack()].title, "The Delta");
}

TEST_F(ExtendedDatabaseTest, BrowsingDoesNotDisturbWhatPlays) {
  bench.select(5, 3);
  bench.wait(seconds(1));
  bench.ask("04 00 16");
  bench.select(2, 0);
  bench.list(5);
  EXPECT_EQ(bench.ipod.player().position(bench.now), seconds(1));
  EXPECT_EQ(bench.ask("04 00 20 00 00 00 03"), Payloads{"04 00 21 54 68 65 20 44 65 6C 74 61 00"});
}

TEST(AllTracks, CanBeSortedByName) {
  Personality personality;
  personality.trackOrder = TrackOrder::kByName;
  MusicLibrary library = smallLibrary();
  library.tracks[2].title = "Zebra";
  Bench bench(personality, library);
  bench.enter();
  EXPECT_EQ(bench.list(5), (Names{"Baker", "Charlie", "The Delta", "Echo", "Zebra"}));
}

TEST(SelectTrack, CanPlayOnlyTheTrack) {
  Personality personality;
  personality.trackSelection = TrackSelection::kAlone;
  Bench bench(personality);
  bench.enter();
  bench.select(5, 3);
  EXPECT_EQ(bench.ipod.player().list().size(), 1u);
  EXPECT_EQ(bench.count(5), 5u);
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 03"), Payloads{"04 00 01 04 00 28"});
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 00"), Payloads{"04 00 01 00 00 28"});
}

TEST(SelectRecord, SomeModelsNeedNoCount) {
  Bench bench(withoutCountRule());
  bench.enter();
  EXPECT_EQ(bench.ask("04 00 17 02 00 00 00 00"), Payloads{"04 00 01 00 00 17"});
}

TEST(SelectPlaylist, IsNotUndoneBySomeModels) {
  Personality personality;
  personality.deselectsPlaylists = false;
  Bench bench(personality);
  bench.enter();
  bench.select(1, 1);
  EXPECT_EQ(bench.ask("04 00 17 01 FF FF FF FF"), Payloads{"04 00 01 04 00 17"});
  EXPECT_EQ(bench.ask("04 00 38 01 FF FF FF FF 04"), Payloads{"04 00 01 04 00 38"});
  EXPECT_EQ(bench.count(5), 3u) << "the playlist is still selected";
  EXPECT_EQ(bench.ask("04 00 17 02 FF FF FF FF"), Payloads{"04 00 01 00 00 17"});
  bench.select(1, 0);
  EXPECT_EQ(bench.count(5), 5u);
}

TEST(EmptyLibrary, HasOnePlaylistAndNothingElse) {
  Bench bench({}, MusicLibrary{"Void", {}, {}, {}});
  bench.enter();
  EXPECT_EQ(bench.list(1), Names{"Void"});
  EXPECT_EQ(bench.count(2), 0u);
  EXPECT_EQ(bench.count(5), 0u);
  EXPECT_EQ(bench.ask("04 00 1A 05 00 00 00 00 FF FF FF FF"), Payloads{"04 00 01 04 00 1A"});
  EXPECT_EQ(bench.ask("04 00 28 00 00 00 00"), Payloads{"04 00 01 04 00 28"});
  EXPECT_EQ(bench.ask("04 00 29 01"), Payloads{"04 00 01 00 00 29"});
  EXPECT_EQ(bench.ask("04 00 1E"), Payloads{"04 00 1F FF FF FF FF"});
}

}  // namespace
}  // namespace simulator
