#include <gtest/gtest.h>

#include <ctime>
#include <iostream>

#include "database/resized_library.h"
#include "support/hex.h"
#include "support/ipod_bench.h"

namespace simulator {
namespace {

TEST(ResizedLibrary, CutsTracksAndPlaylists) {
  const MusicLibrary library = resizedLibrary(smallLibrary(), 2);
  EXPECT_EQ(library.tracks.size(), 2u);
  EXPECT_EQ(library.playlists[0].tracks, std::vector<uint32_t>{0});
  EXPECT_EQ(library.name, "Pod");
}

TEST(ResizedLibrary, ContinuesWithNumberedCopies) {
  const MusicLibrary library = resizedLibrary(smallLibrary(), 15);
  ASSERT_EQ(library.tracks.size(), 15u);
  EXPECT_EQ(library.tracks[7].title, "Echo (2)");
  EXPECT_EQ(library.tracks[7].artist, "Carl (2)");
  EXPECT_EQ(library.tracks[14].album, "Hive (3)");
  EXPECT_EQ(library.tracks[10].composer, "");
}

TEST(ResizedLibrary, EmptyLibraryStaysEmpty) {
  EXPECT_TRUE(resizedLibrary(MusicLibrary{}, 10).tracks.empty());
}

TEST(ResizedLibrary, CopiesHaveTheSoundOfTheirTrack) {
  MusicLibrary library = smallLibrary();
  library.tracks.resize(2);
  library.files = {"a", "b"};
  EXPECT_EQ(resizedLibrary(library, 5).files, (std::vector<std::string>{"a", "b", "a", "b", "a"}));
  EXPECT_EQ(resizedLibrary(library, 1).files, std::vector<std::string>{"a"});
  EXPECT_TRUE(resizedLibrary(smallLibrary(), 10).files.empty());
}

/// Returns the processor time of this process, which does not depend on other programs.
double nowMs() { return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// The limits are far above the time of a request, and far below that of a quadratic algorithm.
class LargeLibrary : public testing::Test {
 protected:
  static constexpr double kLimitMs = 1000;

  void time(const std::string& what, const std::string& request) {
    const double begin = nowMs();
    const Payloads answer = bench.ask(request);
    const double ms = nowMs() - begin;
    std::cout << "  " << what << ": " << ms << " ms, " << answer.size() << " messages\n";
    EXPECT_FALSE(answer.empty());
    EXPECT_LT(ms, kLimitMs) << what;
  }

  Bench bench{{}, resizedLibrary(smallLibrary(), 50000)};
};

TEST_F(LargeLibrary, AnswersEveryRequestQuickly) {
  bench.enter();
  time("count tracks", "04 00 18 05");
  time("count artists", "04 00 18 02");
  time("select artist", "04 00 17 02 00 00 10 00");
  time("count its tracks", "04 00 18 05");
  time("widen", "04 00 17 02 FF FF FF FF");
  time("count playlists", "04 00 18 01");
  time("sort by name", "04 00 38 01 00 00 00 00 04");
  time("count sorted tracks", "04 00 18 05");
  time("one record", "04 00 1A 05 00 00 80 00 00 00 00 01");
  time("shuffle", "04 00 2E 01");
  time("play all", "04 00 28 00 00 00 00");
  time("shuffle albums", "04 00 2E 02");
  time("select track", "04 00 17 05 00 00 10 00");
}

TEST_F(LargeLibrary, SendsEveryRecord) {
  bench.enter();
  const double begin = nowMs();
  const uint32_t count = bench.count(5);
  bench.send("04 00 1A 05 00 00 00 00 FF FF FF FF");
  EXPECT_EQ(bench.ipod.takeOutput(bench.now).size(), count);
  const double ms = nowMs() - begin;
  std::cout << "  " << count << " records: " << ms << " ms\n";
  EXPECT_LT(ms, 10 * kLimitMs);
}

TEST(LargeLibraryIndex, IsBuiltInReasonableTime) {
  MusicLibrary library = resizedLibrary(smallLibrary(), 50000);
  const double begin = nowMs();
  const Catalogue catalogue(std::move(library));
  const double ms = nowMs() - begin;
  std::cout << "  index of 50000 tracks: " << ms << " ms\n";
  EXPECT_LT(ms, 10000);
}

}  // namespace
}  // namespace simulator
