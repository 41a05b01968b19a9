#include "database/catalogue.h"

#include <gtest/gtest.h>

#include "database/sort_key.h"
#include "support/small_library.h"

namespace simulator {
namespace {

TEST(SortKey, LeavesOutALeadingArticle) {
  EXPECT_EQ(sortKey("The Bees"), "bees");
  EXPECT_EQ(sortKey("A Song"), "song");
  EXPECT_EQ(sortKey("an Hour"), "hour");
}

TEST(SortKey, KeepsWordsThatOnlyBeginLikeAnArticle) {
  EXPECT_EQ(sortKey("Theory"), "theory");
  EXPECT_EQ(sortKey("The"), "the");
  EXPECT_EQ(sortKey("The "), "the ");
  EXPECT_EQ(sortKey("Another"), "another");
}

TEST(SortKey, SortsLatinLettersWithAccentsLikeThoseWithout) {
  EXPECT_EQ(sortKey("\xC3\x89toile"), "etoile");
  EXPECT_EQ(sortKey("\xC3\xA5ngstr\xC3\xB6m"), "angstrom");
  EXPECT_EQ(sortKey("\xC3\xBC"), "u");
}

TEST(SortKey, KeepsOtherBytes) {
  EXPECT_EQ(sortKey("\xE6\x97\xA5"), "\xE6\x97\xA5");
  EXPECT_EQ(sortKey("\xC3"), "\xC3");
  EXPECT_EQ(sortKey("\xC3\x97"), "\xC3\x97");
  EXPECT_EQ(sortKey("\xC3\x28"), "\xC3\x28");
  EXPECT_EQ(sortKey(""), "");
}

class CatalogueTest : public testing::Test {
 protected:
  std::vector<std::string> titles(const std::vector<uint32_t>& tracks) {
    std::vector<std::string> names;
    for (uint32_t track : tracks)
      names.push_back(catalogue.track(track).title);
    return names;
  }
  std::vector<std::string> inOrder(SortOrder order) {
    std::vector<std::string> names(catalogue.trackCount());
    for (uint32_t track = 0; track < catalogue.trackCount(); ++track) {
      names[catalogue.trackRanks(order)[track]] = catalogue.track(track).title;
    }
    return names;
  }

  Catalogue catalogue{smallLibrary()};
};

using Names = std::vector<std::string>;

TEST_F(CatalogueTest, MusicIsSortedByArtistAlbumAndTrackNumber) {
  EXPECT_EQ(titles(catalogue.music()), (Names{"Able", "Baker", "Charlie", "The Delta", "Echo"}));
}

TEST_F(CatalogueTest, OtherKindsAreSeparate) {
  EXPECT_EQ(titles(catalogue.tracksOfKind(MediaKind::kAudiobook)), Names{"Chapter One"});
  EXPECT_EQ(titles(catalogue.tracksOfKind(MediaKind::kPodcast)), Names{"Episode"});
}

TEST_F(CatalogueTest, NamesOfATableAreSortedAndDistinct) {
  EXPECT_EQ(catalogue.table(Category::kAlbum).names,
            (Names{"Daily", "First", "Hive", "Long Book", "Second"}));
  EXPECT_EQ(catalogue.table(Category::kComposer).names, (Names{"Cole", "Dorn"}));
}

TEST_F(CatalogueTest, TrackWithoutATagHasNoEntry) {
  EXPECT_EQ(catalogue.table(Category::kComposer).ofTrack[3], kNoEntry);
}

TEST_F(CatalogueTest, TracksByGenreThenByDefault) {
  EXPECT_EQ(inOrder(SortOrder::kGenre),
            (Names{"Chapter One", "Echo", "Episode", "Charlie", "Able", "Baker", "The Delta"}));
}

TEST_F(CatalogueTest, TracksByComposerWithThoseWithoutOneLast) {
  EXPECT_EQ(inOrder(SortOrder::kComposer),
            (Names{"Able", "Baker", "Echo", "Charlie", "The Delta", "Episode", "Chapter One"}));
}

TEST_F(CatalogueTest, TracksByAlbumThenByTrackNumber) {
  EXPECT_EQ(inOrder(SortOrder::kAlbum),
            (Names{"Episode", "Able", "Baker", "The Delta", "Echo", "Chapter One", "Charlie"}));
}

TEST_F(CatalogueTest, TracksByNameWithoutArticles) {
  EXPECT_EQ(inOrder(SortOrder::kName),
            (Names{"Able", "Baker", "Chapter One", "Charlie", "The Delta", "Echo", "Episode"}));
}

TEST_F(CatalogueTest, TracksByReleaseDate) {
  EXPECT_EQ(inOrder(SortOrder::kReleaseDate),
            (Names{"Echo", "The Delta", "Chapter One", "Able", "Baker", "Charlie", "Episode"}));
}

TEST(Catalogue, SortsByDiscBeforeTrackNumber) {
  MusicLibrary library;
  const MediaKind music = MediaKind::kMusic;
  library.tracks = {{"d2t1", "A", "B", "", "", music, 2, 1, 0, 1, 44100},
                    {"d1t2", "A", "B", "", "", music, 1, 2, 0, 1, 44100},
                    {"d1t1", "A", "B", "", "", music, 1, 1, 0, 1, 44100}};
  const Catalogue catalogue(library);
  EXPECT_EQ(catalogue.music(), (std::vector<uint32_t>{2, 1, 0}));
}

TEST(Catalogue, NamesWithTheSameSortKeyRemainTwoNames) {
  MusicLibrary library;
  for (const char* artist : {"the bees", "Bees", "The Bees"}) {
    Track track;
    track.artist = artist;
    library.tracks.push_back(track);
  }
  EXPECT_EQ(Catalogue(library).table(Category::kArtist).names,
            (std::vector<std::string>{"Bees", "The Bees", "the bees"}));
}

TEST(Catalogue, EmptyLibraryHasNothing) {
  const Catalogue catalogue{MusicLibrary{}};
  EXPECT_TRUE(catalogue.music().empty());
  EXPECT_TRUE(catalogue.table(Category::kArtist).names.empty());
}

}  // namespace
}  // namespace simulator
