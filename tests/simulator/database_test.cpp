#include "database/database.h"

#include <gtest/gtest.h>

#include "support/small_library.h"

namespace simulator {
namespace {

using Names = std::vector<std::string>;

class DatabaseTest : public testing::Test {
 protected:
  Names names(Category category) {
    Names all;
    for (uint32_t i = 0; i < database.size(category); ++i) {
      all.push_back(database.recordName(category, i));
    }
    return all;
  }
  void select(Category category, uint32_t index, SortOrder order = SortOrder::kDefault) {
    EXPECT_EQ(database.select(category, index, order), Status::kOk);
  }

  Catalogue catalogue{smallLibrary()};
  Database database{catalogue};
};

TEST_F(DatabaseTest, WithoutASelectionEveryCategoryIsWhole) {
  EXPECT_EQ(names(Category::kPlaylist), (Names{"Pod", "Mix", "Empty"}));
  EXPECT_EQ(names(Category::kArtist), (Names{"Anna", "The Bees", "Carl"}));
  EXPECT_EQ(names(Category::kAlbum), (Names{"First", "Hive", "Second"}));
  EXPECT_EQ(names(Category::kGenre), (Names{"Jazz", "Pop", "Rock"}));
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Baker", "Charlie", "The Delta", "Echo"}));
  EXPECT_EQ(names(Category::kComposer), (Names{"Cole", "Dorn"}));
  EXPECT_EQ(names(Category::kAudiobook), Names{"Long Book"});
  EXPECT_EQ(names(Category::kPodcast), Names{"Daily"});
}

TEST_F(DatabaseTest, ArtistNarrowsAlbumsAndTracks) {
  select(Category::kArtist, 0);
  EXPECT_EQ(names(Category::kAlbum), (Names{"First", "Second"}));
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Baker", "Charlie"}));
}

TEST_F(DatabaseTest, ArtistThenAlbumNarrowsTwice) {
  select(Category::kArtist, 0);
  select(Category::kAlbum, 1);
  EXPECT_EQ(names(Category::kTrack), Names{"Charlie"});
}

TEST_F(DatabaseTest, AlbumWithoutAnArtistHasTheTracksOfAllItsArtists) {
  select(Category::kAlbum, 1);
  EXPECT_EQ(names(Category::kTrack), (Names{"The Delta", "Echo"}));
}

TEST_F(DatabaseTest, GenreNarrowsArtists) {
  select(Category::kGenre, 2);
  EXPECT_EQ(names(Category::kArtist), (Names{"Anna", "The Bees"}));
  EXPECT_EQ(names(Category::kAlbum), (Names{"First", "Hive"}));
}

TEST_F(DatabaseTest, SelectingALevelClearsTheLevelsBelow) {
  select(Category::kArtist, 0);
  select(Category::kAlbum, 0);
  select(Category::kGenre, 0);
  EXPECT_EQ(names(Category::kTrack), Names{"Echo"});
}

TEST_F(DatabaseTest, SelectingTheSameCategoryAgainReplacesTheSelection) {
  select(Category::kArtist, 0);
  select(Category::kArtist, 2);
  EXPECT_EQ(names(Category::kTrack), Names{"Echo"});
}

TEST_F(DatabaseTest, ComposerReplacesArtist) {
  select(Category::kArtist, 0);
  select(Category::kComposer, 0);
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Baker", "Echo"}));
}

TEST_F(DatabaseTest, HigherCategoriesAreNotNarrowedByLowerOnes) {
  select(Category::kArtist, 2);
  EXPECT_EQ(names(Category::kGenre), (Names{"Jazz", "Pop", "Rock"}));
  EXPECT_EQ(database.size(Category::kPlaylist), 3u);
}

TEST_F(DatabaseTest, NoIndexWidensTheSelectionByOneStep) {
  select(Category::kArtist, 0);
  select(Category::kAlbum, 0);
  select(Category::kAlbum, kNoIndex);
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Baker", "Charlie"}));
  select(Category::kArtist, kNoIndex);
  EXPECT_EQ(database.size(Category::kTrack), 5u);
}

TEST_F(DatabaseTest, NoIndexOfACategoryThatIsNotSelectedChangesNothing) {
  select(Category::kArtist, 0);
  select(Category::kAlbum, kNoIndex);
  select(Category::kComposer, kNoIndex);
  EXPECT_EQ(database.size(Category::kTrack), 3u);
}

TEST_F(DatabaseTest, NoIndexOfTracksIsRefused) {
  EXPECT_EQ(database.select(Category::kTrack, kNoIndex, SortOrder::kDefault),
            Status::kBadParameter);
}

TEST_F(DatabaseTest, IndexBeyondTheListIsRefusedAndChangesNothing) {
  select(Category::kArtist, 0);
  EXPECT_EQ(database.select(Category::kAlbum, 2, SortOrder::kDefault), Status::kBadParameter);
  EXPECT_EQ(database.size(Category::kTrack), 3u);
}

TEST_F(DatabaseTest, WholeLibraryIsAPlaylistThatNarrowsNothing) {
  select(Category::kPlaylist, 0);
  EXPECT_EQ(database.size(Category::kTrack), 5u);
}

TEST_F(DatabaseTest, PlaylistKeepsItsOrderAndAnyKindOfTrack) {
  select(Category::kPlaylist, 1);
  EXPECT_EQ(names(Category::kTrack), (Names{"Echo", "Able", "Episode"}));
  EXPECT_EQ(names(Category::kArtist), (Names{"Anna", "Carl"}));
  EXPECT_EQ(names(Category::kPodcast), Names{"Daily"});
}

TEST_F(DatabaseTest, EmptyPlaylistIsEmpty) {
  select(Category::kPlaylist, 2);
  EXPECT_EQ(database.size(Category::kTrack), 0u);
  EXPECT_EQ(database.size(Category::kArtist), 0u);
}

TEST_F(DatabaseTest, AudiobookLeadsToItsChapters) {
  select(Category::kAudiobook, 0);
  EXPECT_EQ(names(Category::kTrack), Names{"Chapter One"});
  select(Category::kPodcast, 0);
  EXPECT_EQ(names(Category::kTrack), Names{"Episode"});
}

TEST_F(DatabaseTest, SortOrderAppliesToTheTracks) {
  select(Category::kPlaylist, 0, SortOrder::kName);
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Baker", "Charlie", "The Delta", "Echo"}));
  select(Category::kPlaylist, 0, SortOrder::kGenre);
  EXPECT_EQ(names(Category::kTrack), (Names{"Echo", "Charlie", "Able", "Baker", "The Delta"}));
  select(Category::kPlaylist, 0, SortOrder::kReleaseDate);
  EXPECT_EQ(names(Category::kTrack), (Names{"Echo", "The Delta", "Able", "Baker", "Charlie"}));
}

TEST_F(DatabaseTest, SortOrderAppliesToAPlaylistUnlessItIsThePlaylistsOrder) {
  select(Category::kPlaylist, 1, SortOrder::kName);
  EXPECT_EQ(names(Category::kTrack), (Names{"Able", "Echo", "Episode"}));
  select(Category::kPlaylist, 1, SortOrder::kPlaylist);
  EXPECT_EQ(names(Category::kTrack), (Names{"Echo", "Able", "Episode"}));
}

TEST_F(DatabaseTest, SortOrderAppliesToAlbumsByTheirFirstTrack) {
  select(Category::kPlaylist, 0, SortOrder::kReleaseDate);
  EXPECT_EQ(names(Category::kAlbum), (Names{"Hive", "First", "Second"}));
  select(Category::kPlaylist, 0, SortOrder::kArtist);
  EXPECT_EQ(names(Category::kAlbum), (Names{"First", "Second", "Hive"}));
}

TEST_F(DatabaseTest, SortOrderByNameUsesTheNamesOfTheList) {
  select(Category::kPlaylist, 0, SortOrder::kName);
  EXPECT_EQ(names(Category::kAlbum), (Names{"First", "Hive", "Second"}));
}

TEST_F(DatabaseTest, IndexOfASelectionRefersToTheListBeforeIt) {
  select(Category::kPlaylist, 0, SortOrder::kReleaseDate);
  select(Category::kAlbum, 0, SortOrder::kDefault);
  EXPECT_EQ(names(Category::kTrack), (Names{"The Delta", "Echo"}));
}

TEST_F(DatabaseTest, PlainSelectionSortsByDefaultAgain) {
  select(Category::kPlaylist, 0, SortOrder::kReleaseDate);
  select(Category::kPlaylist, 0);
  EXPECT_EQ(names(Category::kTrack).front(), "Able");
}

TEST_F(DatabaseTest, AllTracksTogetherCanBeSortedByName) {
  MusicLibrary library = smallLibrary();
  library.tracks[2].title = "Zebra";  // Anna's first
  const Catalogue other(library);
  Database byName(other, SortOrder::kName);
  EXPECT_EQ(byName.recordName(Category::kTrack, 4), "Zebra");
  EXPECT_EQ(byName.select(Category::kPlaylist, 0, SortOrder::kDefault), Status::kOk);
  EXPECT_EQ(byName.recordName(Category::kTrack, 4), "Zebra");
  EXPECT_EQ(byName.select(Category::kArtist, 0, SortOrder::kDefault), Status::kOk);
  EXPECT_EQ(byName.recordName(Category::kTrack, 0), "Zebra");
  byName.reset();
  EXPECT_EQ(byName.select(Category::kPlaylist, 0, SortOrder::kArtist), Status::kOk);
  EXPECT_EQ(byName.recordName(Category::kTrack, 0), "Zebra");
  EXPECT_EQ(byName.select(Category::kPlaylist, 1, SortOrder::kDefault), Status::kOk);
  EXPECT_EQ(byName.recordName(Category::kTrack, 0), "Echo");
}

TEST_F(DatabaseTest, SelectedTrackNarrowsNoList) {
  select(Category::kTrack, 3);
  EXPECT_EQ(database.selectedTrack(), 3u);
  EXPECT_EQ(database.size(Category::kTrack), 5u);
  select(Category::kArtist, 0);
  EXPECT_FALSE(database.selectedTrack());
}

TEST_F(DatabaseTest, ResetClearsTheSelectionTheOrderAndTheCountedCategories) {
  database.count(Category::kArtist);
  select(Category::kArtist, 0, SortOrder::kReleaseDate);
  EXPECT_TRUE(database.wasCounted(Category::kArtist));
  database.reset();
  EXPECT_FALSE(database.wasCounted(Category::kArtist));
  EXPECT_EQ(names(Category::kTrack).front(), "Able");
}

TEST_F(DatabaseTest, OnlyACountMakesACategoryCounted) {
  database.size(Category::kArtist);
  EXPECT_FALSE(database.wasCounted(Category::kArtist));
  EXPECT_EQ(database.count(Category::kArtist), 3u);
  EXPECT_TRUE(database.wasCounted(Category::kArtist));
  EXPECT_FALSE(database.wasCounted(Category::kAlbum));
}

TEST(CategoryOf, KnowsOneToEight) {
  EXPECT_FALSE(categoryOf(0));
  EXPECT_EQ(categoryOf(1), Category::kPlaylist);
  EXPECT_EQ(categoryOf(8), Category::kPodcast);
  EXPECT_FALSE(categoryOf(9));
}

TEST(SortOrderOf, UnknownNumberIsTheDefault) {
  EXPECT_EQ(sortOrderOf(0), SortOrder::kGenre);
  EXPECT_EQ(sortOrderOf(6), SortOrder::kReleaseDate);
  EXPECT_EQ(sortOrderOf(7), SortOrder::kDefault);
  EXPECT_EQ(sortOrderOf(0xFF), SortOrder::kDefault);
}

TEST(Database, PlaylistEntriesThatAreNotTracksAreLeftOut) {
  MusicLibrary library = smallLibrary();
  library.playlists[1].tracks = {2, 99, 2};
  const Catalogue catalogue(library);
  Database database(catalogue);
  EXPECT_EQ(database.select(Category::kPlaylist, 2, SortOrder::kDefault), Status::kOk);
  EXPECT_EQ(database.tracks(), (std::vector<uint32_t>{2, 2}));
}

}  // namespace
}  // namespace simulator
