// Every list, and every name in it, whatever was asked before.
#include <gmock/gmock.h>

#include <optional>
#include <random>
#include <thread>

#include "database/database.h"
#include "head_unit_bench.h"
#include "support/known_music.h"

namespace serve_test {
namespace {

using simulator::Catalogue;
using simulator::Category;
using simulator::Database;
using simulator::MusicLibrary;
using simulator::SortOrder;

constexpr int kAll = -1;

struct KindOfList {
  const char* name;
  Category category;
  SortOrder order;  ///< of what is selected for it
};

constexpr KindOfList kKinds[] = {
    {"playlists", Category::kPlaylist, SortOrder::kName},
    {"artists", Category::kArtist, SortOrder::kArtist},
    {"albums", Category::kAlbum, SortOrder::kAlbum},
    {"genres", Category::kGenre, SortOrder::kGenre},
    {"tracks", Category::kTrack, SortOrder::kName},
    {"composers", Category::kComposer, SortOrder::kDefault},
    {"audiobooks", Category::kAudiobook, SortOrder::kDefault},
    {"podcasts", Category::kPodcast, SortOrder::kDefault},
    {"all-tracks", Category::kTrack, SortOrder::kName},
};

bool hasPlayAll(const KindOfList& kind) {
  const std::string name = kind.name;
  return name == "artists" || name == "albums" || name == "all-tracks";
}

std::string utf8Of(const std::string& latin) {
  std::string text;
  for (const char each : latin) {
    const auto byte = static_cast<unsigned char>(each);
    if (byte < 0x80) {
      text += each;
    } else {
      text += static_cast<char>(byte < 0xC0 ? 0xC2 : 0xC3);
      text += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return text;
}

/// A walk from a first list downwards, and what the iPod's database has there.
class Walk {
 public:
  Walk(const Catalogue& music, SortOrder allTracks) : database(music, allTracks) {}

  void begin(const KindOfList& kind) {
    database.reset();
    names.clear();
    last = kind;
    path = kind.name;
  }
  void descend(int index, const KindOfList& kind) {
    database.count(last.category);
    names.push_back(index == kAll ? "" : name(index));
    const auto selected = index == kAll ? 0xFFFFFFFF : static_cast<uint32_t>(index);
    database.select(last.category, selected, kind.order);
    path += "/" + (index == kAll ? "all" : std::to_string(index)) + "/" + kind.name;
    last = kind;
  }
  /// The first playlist, the whole library, is not offered.
  int first() { return path == "playlists" ? 1 : 0; }
  int count() { return static_cast<int>(database.size(last.category)) - first(); }
  std::string name(int index) {
    return utf8Of(
        session::hostText(database.recordName(last.category, static_cast<uint32_t>(index))));
  }
  bool isOfTracks() const { return last.category == Category::kTrack; }
  bool isAllThere() { return hasPlayAll(last) && count() > 0; }

  std::string path;
  KindOfList last = kKinds[0];
  std::vector<std::string> names;  ///< of the entries above

 private:
  Database database;
};

/// Compares a part of a list with the database.
void expectPart(HeadUnitBench& bench, Walk& walk, int offset, int count) {
  const tool::Outcome outcome = bench.list(walk.path, offset, count);
  if (bench.mayRefuse && outcome.refusal) return;
  ASSERT_FALSE(outcome.refusal) << walk.path << ": " << outcome.message;
  const json& list = outcome.result;
  ASSERT_EQ(list["count"], walk.count()) << walk.path;
  EXPECT_EQ(list["path"], walk.path);
  EXPECT_EQ(list["play_all"], walk.isAllThere()) << walk.path;
  ASSERT_EQ(list["above"].size(), walk.names.size());
  for (size_t i = 0; i < walk.names.size(); ++i) {
    const json& name = list["above"][i]["name"];
    EXPECT_EQ(name.is_null() ? "" : name, walk.names[i]) << walk.path;
  }
  const int expected = std::max(0, std::min(count, walk.count() - offset));
  ASSERT_EQ(list["items"].size(), static_cast<size_t>(expected)) << walk.path;
  for (int i = 0; i < expected; ++i) {
    const json& item = list["items"][static_cast<size_t>(i)];
    const int index = walk.first() + offset + i;
    ASSERT_EQ(item["index"], index);
    ASSERT_EQ(item["name"], walk.name(index)) << walk.path << " " << index;
  }
}

/// Walks at random and compares each list.
void walkAtRandom(HeadUnitBench& bench, const Catalogue& music, uint32_t seed, int walks) {
  std::mt19937 random(seed);
  const auto below = [&](int end) {
    return static_cast<int>(random() % static_cast<uint32_t>(end));
  };
  Walk walk(music, bench.ipod().look([](auto& ipod) { return ipod.personality().trackOrder; }) ==
                           simulator::TrackOrder::kByName
                       ? SortOrder::kName
                       : SortOrder::kDefault);
  for (int i = 0; i < walks && !testing::Test::HasFatalFailure(); ++i) {
    walk.begin(kKinds[below(8)]);
    for (int depth = below(4); depth >= 0; --depth) {
      const int offset = below(walk.count() + 2);
      expectPart(bench, walk, offset, 1 + below(12));
      if (testing::Test::HasFatalFailure() || walk.count() == 0 || walk.isOfTracks()) break;
      const bool opensAll = walk.isAllThere() && below(4) == 0;
      const int index = opensAll ? kAll : walk.first() + below(walk.count());
      walk.descend(index, kKinds[below(9)]);
    }
  }
}

/// Each kind of list has `size` items at the top, and so has each below a record of it.
MusicLibrary shelves(int size) {
  MusicLibrary library;
  library.name = "Shelves";
  const auto add = [&](const std::string& track, const std::string& rest,
                       simulator::MediaKind kind) {
    library.tracks.push_back({"Track " + track, "Artist " + rest, "Album " + track, "Genre " + rest,
                              "Composer " + rest, kind, 1, 1, 2000, 60000, 44100});
  };
  for (int i = 0; i < size; ++i) {
    const std::string number = std::to_string(i);
    add("A" + number, number, simulator::MediaKind::kMusic);
    add("B" + number, "0", simulator::MediaKind::kMusic);
    add("C" + number, number, simulator::MediaKind::kAudiobook);
    add("D" + number, number, simulator::MediaKind::kPodcast);
    library.playlists.push_back({"List " + number, {static_cast<uint32_t>(i)}});
  }
  if (size > 0) {
    for (uint32_t i = 0; i < static_cast<uint32_t>(size); ++i)
      library.playlists[0].tracks.push_back(i);
  }
  return library;
}

class ListsOfSize : public testing::TestWithParam<int> {};

TEST_P(ListsOfSize, HaveTheNamesOfTheDatabase) {
  const MusicLibrary music = shelves(GetParam());
  const Catalogue catalogue(music);
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  Walk walk(catalogue, SortOrder::kDefault);
  for (const KindOfList& first : kKinds) {
    if (std::string(first.name) == "all-tracks") continue;
    for (const KindOfList& second : kKinds) {
      walk.begin(first);
      const int end = walk.count();
      expectPart(bench, walk, 0, 3);
      expectPart(bench, walk, std::max(0, end - 3), 5);
      if (end == 0 || walk.isOfTracks()) continue;
      walk.descend(walk.first(), second);
      expectPart(bench, walk, 0, 3);
      expectPart(bench, walk, std::max(0, walk.count() - 3), 5);
      ASSERT_FALSE(HasFatalFailure());
    }
  }
  walkAtRandom(bench, catalogue, 1, 60);
}

INSTANTIATE_TEST_SUITE_P(, ListsOfSize, testing::Values(0, 1, 2, 35, 36, 70, 71, 1000));

class ListsOfModel : public testing::TestWithParam<std::string> {};

TEST_P(ListsOfModel, HaveTheNamesOfTheDatabase) {
  const MusicLibrary music = simulator::builtInLibrary();
  HeadUnitBench bench(simulator::personality(GetParam()), music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  walkAtRandom(bench, Catalogue(music), 2, 25);
}

INSTANTIATE_TEST_SUITE_P(, ListsOfModel, testing::ValuesIn(simulator::personalityNames()),
                         [](const auto& test) { return test.param; });

TEST(Lists, OfSeveralClientsAtTheSameTimeHaveTheirNames) {
  const MusicLibrary music = shelves(71);
  const Catalogue catalogue(music);
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  std::vector<std::thread> clients;
  for (uint32_t seed = 10; seed < 14; ++seed)
    clients.emplace_back([&, seed] { walkAtRandom(bench, catalogue, seed, 25); });
  for (std::thread& each : clients)
    each.join();
}

TEST(Lists, KeepNoNameOfAnAnswerThatWasLostOrArrivedTwiceOrLate) {
  const MusicLibrary music = shelves(36);
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.ipod().addFault("lost@04:001A#7");
  bench.ipod().addFault("doubled@04:001A#33");
  bench.ipod().addFault("late=30@04:001A#61");
  bench.ipod().addFault("lost@04:0018#14");
  bench.ipod().addFault("doubled@04:0018#28");
  walkAtRandom(bench, Catalogue(music), 3, 12);
}

TEST(Lists, HaveNoWrongNameWhateverIsLostLateOrDoubled) {
  const MusicLibrary music = shelves(36);
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.mayRefuse = true;
  bench.ipod().addFault("random=1/lost,doubled,late,wrong-command");
  walkAtRandom(bench, Catalogue(music), 4, 4);
}

// This model refuses to undo the selection of a playlist. The library waits a second for it.
TEST(Lists, BelowPlaylistsAreLeftWithoutUndoingTheirSelection) {
  HeadUnitBench bench(simulator::personality("strict"));
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.list("playlists/2/tracks");
  EXPECT_LE(session::durationOf([&] { bench.list("playlists/3/tracks", 0, 1); }),
            std::chrono::milliseconds(900));
}

TEST(Lists, OfAnOlderGenerationAreRefused) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const tool::Outcome outcome =
      bench.unit().list({"artists", bench.generation() - 1, 0, 5}, waiting);
  EXPECT_EQ(outcome.refusal, tool::Refusal::kStaleGeneration);
  EXPECT_EQ(outcome.code, "stale-generation");
}

TEST(Lists, ThatAreNotThereAreRefused) {
  HeadUnitBench bench({}, shelves(2));
  ASSERT_TRUE(bench.waitForStage("ready"));
  for (const char* path : {"", "songs", "artists/2/albums", "artists/x/albums", "tracks/0/tracks",
                           "playlists/0/tracks", "all-tracks", "artists/0",
                           "artists/0/artists/0/artists/0/artists/0/artists/0/artists/0/artists/0/"
                           "artists"}) {
    EXPECT_EQ(bench.list(path).refusal, tool::Refusal::kNoSuchList) << path;
  }
  EXPECT_EQ(bench.list("artists", -1).refusal, tool::Refusal::kBadRequest);
  EXPECT_EQ(bench.list("artists", 0, 101).refusal, tool::Refusal::kBadRequest);
}

TEST(Lists, ThatNobodyWaitsForDoNotReachTheIpod) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const auto openings = [&] {
    return bench.ipod().look([](const simulator::SimulatedIpod& ipod) {
      return ipod.countReceived(simulator::Lingo::kExtendedInterface, 0x0016);
    });
  };
  const size_t before = openings();
  const auto gone = [] { return false; };
  EXPECT_TRUE(bench.unit().list({"albums", bench.generation(), 0, 5}, gone).refusal);
  EXPECT_EQ(openings(), before);
}

TEST(Lists, HaveTabsLabelledWithTheirNames) {
  const MusicLibrary music = shelves(36);
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  const json tabs = bench.unit().tabs({"genres", bench.generation(), 1, 1}, waiting).result["tabs"];
  ASSERT_EQ(tabs.size(), 2U);
  EXPECT_EQ(tabs[0], (json{{"tab", 0}, {"first", 0}, {"count", 35}, {"label", nullptr}}));
  EXPECT_EQ(tabs[1], (json{{"tab", 1}, {"first", 35}, {"count", 1}, {"label", "Genr - Genr"}}));
  EXPECT_EQ(bench.unit().tabs({"tracks", bench.generation(), 0, 9}, waiting).result["tabs"],
            json::array());
}

/// Asks for the artists until they are there. Returns how often the iPod was connected for that.
uint64_t connectionsUntilTheArtists(HeadUnitBench& bench, tool::Outcome& outcome) {
  const uint64_t before = bench.generation();
  for (int tries = 0; tries < 20; ++tries) {
    if (!bench.waitForStage("ready")) break;
    outcome = bench.list("artists", 0, 3);
    if (!outcome.refusal) break;
    bench.waitFor([](const json& state) { return state["connection"]["stage"] != "ready"; },
                  std::chrono::seconds(2));
  }
  return bench.generation() - before;
}

MusicLibrary libraryWithNames(const std::vector<std::string>& artists) {
  MusicLibrary library;
  for (const std::string& artist : artists) {
    simulator::Track track;
    track.title = "T";
    track.artist = artist;
    library.tracks.push_back(track);
  }
  return library;
}

TEST(Lists, HaveAPlaceholderForANameThatCostTheConnectionTwice) {
  HeadUnitBench bench({}, libraryWithNames({"Anna", "Bo" + std::string(300, 'x'), "Carl"}));
  ASSERT_TRUE(bench.waitForStage("ready"));
  tool::Outcome outcome;
  EXPECT_EQ(connectionsUntilTheArtists(bench, outcome), 2U);
  ASSERT_FALSE(outcome.refusal) << outcome.message;
  EXPECT_EQ(outcome.result["items"][0]["name"], "Anna");
  EXPECT_EQ(outcome.result["items"][1]["name"], "(name too long)");
  EXPECT_EQ(outcome.result["items"][2]["name"], "Carl");
  // Also what is below it, and after another connection.
  EXPECT_EQ(bench.list("artists/1/tracks").result["items"][0]["name"], "T");
  EXPECT_FALSE(bench.unit().reconnect(waiting).refusal);
  const uint64_t before = bench.generation();
  ASSERT_TRUE(bench.waitFor([&](const json& state) { return state["generation"] > before; }));
  EXPECT_EQ(connectionsUntilTheArtists(bench, outcome), 0U);
  EXPECT_EQ(outcome.result["items"][1]["name"], "(name too long)");
}

TEST(Lists, KeepNoPlaceholderForANameThatWasDamagedOnce) {
  HeadUnitBench bench({}, libraryWithNames({"Anna", "Bo", "Carl"}));
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.ipod().addFault("corrupt@04:001A#2");
  tool::Outcome outcome;
  EXPECT_EQ(connectionsUntilTheArtists(bench, outcome), 1U);
  EXPECT_EQ(outcome.result["items"][1]["name"], "Bo");
}

}  // namespace
}  // namespace serve_test
