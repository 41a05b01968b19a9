// What plays, the transport buttons and the modes.
#include <gmock/gmock.h>

#include "head_unit_bench.h"
#include "support/small_library.h"

namespace serve_test {
namespace {

/// Waits until a track with this title plays.
bool waitForTitle(HeadUnitBench& bench, const std::string& title) {
  return bench.waitFor([&](const json& state) {
    return state["playback"]["title"] == title && state["playback"]["status"] == "playing";
  });
}

bool waitForStatus(HeadUnitBench& bench, const std::string& status) {
  return bench.waitFor([&](const json& state) { return state["playback"]["status"] == status; });
}

std::string itemName(HeadUnitBench& bench, const std::string& path, int index) {
  return bench.list(path, index, 1).result["items"][0]["name"];
}

TEST(HeadUnitPlaying, PlaysATrackOfAListAndShowsIt) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const std::string title = itemName(bench, "artists/4/tracks", 2);
  ASSERT_FALSE(bench.play("artists/4/tracks", 2).refusal);
  ASSERT_TRUE(waitForTitle(bench, title));
  const json playback = bench.state()["playback"];
  const simulator::Track track = bench.ipod().playingTrack();
  EXPECT_EQ(track.title, title);
  EXPECT_EQ(playback["artist"], track.artist);
  EXPECT_EQ(playback["album"], track.album);
  EXPECT_EQ(playback["genre"], track.genre);
  EXPECT_EQ(playback["index"], 2);
  EXPECT_EQ(playback["tracks"], 8);
  EXPECT_EQ(playback["origin"], (json{{"path", "artists/4/tracks"}, {"name", track.artist}}));
  EXPECT_TRUE(
      bench.waitFor([](const json& state) { return state["playback"]["position_ms"] > 800; }));
}

TEST(HeadUnitPlaying, PlaysTheTracksOfARecord) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const std::string title = itemName(bench, "playlists/2/tracks", 0);
  ASSERT_FALSE(bench.play("playlists", 2).refusal);
  EXPECT_TRUE(waitForTitle(bench, title));
  EXPECT_EQ(bench.state()["playback"]["origin"]["name"], itemName(bench, "playlists", 1));
}

TEST(HeadUnitPlaying, PlaysTheLastPlaylist) {
  simulator::MusicLibrary music = simulator::smallLibrary();
  music.playlists.push_back({"Last", {3}});
  HeadUnitBench bench({}, music);
  ASSERT_TRUE(bench.waitForStage("ready"));
  const int last = bench.list("playlists").result["count"];
  const std::string path = "playlists/" + std::to_string(last) + "/tracks";
  ASSERT_FALSE(bench.play(path, 0).refusal);
  EXPECT_TRUE(waitForTitle(bench, "The Delta"));
}

TEST(HeadUnitPlaying, PlaysAllBelowAPlayAllEntry) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  ASSERT_FALSE(bench.play("artists/4/albums", -1).refusal);
  EXPECT_TRUE(waitForStatus(bench, "playing"));
  EXPECT_EQ(bench.ipod().playingTrack().artist, itemName(bench, "artists", 4));
}

TEST(HeadUnitPlaying, RefusesWhatIsNotThere) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  EXPECT_EQ(bench.play("artists/4/tracks", 8).refusal, tool::Refusal::kNoSuchList);
  EXPECT_EQ(bench.play("genres", -1).refusal, tool::Refusal::kNoSuchList);
  EXPECT_EQ(bench.command("jump").refusal, tool::Refusal::kBadRequest);
  EXPECT_EQ(bench.unit().play({"artists", 7, 0}, waiting).refusal, tool::Refusal::kStaleGeneration);
}

TEST(HeadUnitPlaying, FollowsTheButtons) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  ASSERT_FALSE(bench.play("artists/4/tracks", 0).refusal);
  ASSERT_TRUE(waitForStatus(bench, "playing"));
  bench.command("pause");
  EXPECT_TRUE(waitForStatus(bench, "paused"));
  bench.command("play");
  EXPECT_TRUE(waitForStatus(bench, "playing"));
  bench.command("next-track");
  EXPECT_TRUE(waitForTitle(bench, itemName(bench, "artists/4/tracks", 1)));
  bench.ipod().pty().act([](auto& ipod, auto now) { ipod.pressNext(now); });
  EXPECT_TRUE(waitForTitle(bench, itemName(bench, "artists/4/tracks", 2)));
}

// The library goes round in what is selected; a client has selected something else.
TEST(HeadUnitPlaying, GoesRoundInThePlayingListWhileOthersBrowse) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const std::string first = itemName(bench, "artists/4/tracks", 0);
  ASSERT_FALSE(bench.play("artists/4/tracks", 7).refusal);
  ASSERT_TRUE(waitForTitle(bench, itemName(bench, "artists/4/tracks", 7)));
  bench.list("genres/3/artists", 0, 2);
  bench.command("next-track");
  EXPECT_TRUE(waitForTitle(bench, first));
}

TEST(HeadUnitPlaying, StepsToTheNextRecordWhileOthersBrowse) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  ASSERT_FALSE(bench.play("artists/4/tracks", 3).refusal);
  ASSERT_TRUE(waitForStatus(bench, "playing"));
  bench.list("genres/3/artists", 0, 2);
  bench.command("next-group");
  const std::string artist = itemName(bench, "artists", 5);
  EXPECT_TRUE(
      bench.waitFor([&](const json& state) { return state["playback"]["artist"] == artist; }));
  EXPECT_EQ(bench.state()["playback"]["origin"],
            (json{{"path", "artists/5/tracks"}, {"name", artist}}));
  EXPECT_EQ(itemName(bench, "genres/3/artists", 3), itemName(bench, "genres/3/artists", 3));
}

TEST(HeadUnitPlaying, SetsTheModes) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  EXPECT_FALSE(bench.unit().setModes("albums", "", waiting).refusal);
  EXPECT_EQ(bench.state()["modes"], (json{{"shuffle", "albums"}, {"repeat", "off"}}));
  EXPECT_FALSE(bench.unit().setModes("off", "track", waiting).refusal);
  EXPECT_EQ(bench.state()["modes"], (json{{"shuffle", "off"}, {"repeat", "track"}}));
  EXPECT_EQ(bench.unit().setModes("some", "", waiting).refusal, tool::Refusal::kBadRequest);
}

TEST(HeadUnitPlaying, ShowsTheSampleRateThatTheIpodAnnounces) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  bench.ipod().pty().act([](auto& ipod, auto now) { ipod.announceSampleRate(now, 32000); });
  EXPECT_TRUE(
      bench.waitFor([](const json& state) { return state["audio"]["sample_rate"] == 32000; }));
}

TEST(HeadUnitPlaying, PublishesRefreshAndConsole) {
  HeadUnitBench bench;
  ASSERT_TRUE(bench.waitForStage("ready"));
  const auto reader = bench.events().read({tool::Topic::kRefresh});
  const auto console = bench.events().read({tool::Topic::kConsole});
  bench.play("artists/4/tracks", 0);
  const auto refresh = reader->next(std::chrono::seconds(5));
  ASSERT_TRUE(refresh);
  EXPECT_EQ(refresh->data, "{}");
  bench.unit().setModes("tracks", "", waiting);
  std::string lines;
  while (lines.find("Shuffle tracks activated") == std::string::npos) {
    const auto line = console->next(std::chrono::seconds(5));
    ASSERT_TRUE(line) << lines;
    lines += line->data;
  }
}

class PlayingOnModel : public testing::TestWithParam<std::string> {};

TEST_P(PlayingOnModel, PlaysPausesAndSkips) {
  HeadUnitBench bench(simulator::personality(GetParam()));
  ASSERT_TRUE(bench.waitForStage("ready"));
  ASSERT_FALSE(bench.play("artists/4/tracks", 1).refusal);
  ASSERT_TRUE(waitForTitle(bench, itemName(bench, "artists/4/tracks", 1)));
  bench.command("pause");
  EXPECT_TRUE(waitForStatus(bench, "paused"));
  bench.command("play");
  bench.command("next-track");
  EXPECT_TRUE(waitForTitle(bench, itemName(bench, "artists/4/tracks", 2)));
}

INSTANTIATE_TEST_SUITE_P(, PlayingOnModel, testing::ValuesIn(simulator::personalityNames()),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace serve_test
