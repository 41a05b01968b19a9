// A session with an iPod that holds real audio files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "music/music_folder.h"
#include "support/host_screen.h"
#include "support/session_ipod.h"

namespace session {
namespace {

using simulator::MusicLibrary;
using simulator::Track;
using testing::ElementsAre;

class MusicFolderSession : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(IpodConnect(), 1); }
  void TearDown() override { IpodDisconnect(); }

  Names topList(int type) { return wholeList(IpodGetFirstItem(0, type, 0)); }
  /// Opens the tracks of a record of a top list. They are sorted by title.
  Names tracksOf(int type, const std::string& name) {
    EXPECT_TRUE(goToItem(IpodGetFirstItem(0, type, 0), name)) << name;
    return wholeList(IpodGetFirstItem(1, IPOD_TRACKS, 0));
  }

  simulator::FolderReport report;
  SessionIpod ipod{{}, simulator::loadMusicFolder(TEST_MUSIC_FOLDER, report)};
};

// Characters that Latin-1 does not have are spaces; the emoji empties its title.
TEST_F(MusicFolderSession, ListsWhatTheTagsSay) {
  EXPECT_EQ(ipodName(), "test-music");
  EXPECT_THAT(topList(IPOD_PLAYLISTS), ElementsAre("Drive Home"));
  EXPECT_THAT(topList(IPOD_ARTISTS),
              ElementsAre("\xC9lodie Br\xFBlefer", "Lanterna Quartet", "Unknown Artist", "   "));
  EXPECT_THAT(topList(IPOD_ALBUMS),
              ElementsAre("\xC9t\xE9 indien", "Harbour Sketches", "Untagged", " "));
  EXPECT_THAT(topList(IPOD_GENRES), ElementsAre("Chanson", "Jazz", "World"));
  EXPECT_THAT(topList(IPOD_TRACKS),
              ElementsAre("Fa\xE7"
                          "ade",
                          "Stra\xDF"
                          "e",
                          "Breakwater", "Slipway", "Ropewalk, 9  ", "Demo Tape", " ", ""));
  EXPECT_THAT(topList(IPOD_TYPE_6), ElementsAre("Cosima Quadri"));
  EXPECT_THAT(topList(IPOD_TYPE_7), ElementsAre("The Long Ferry"));
  EXPECT_THAT(topList(IPOD_TYPE_8), ElementsAre("Weather for Sailors"));
}

TEST_F(MusicFolderSession, ListsTheTracksOfAPlaylistAnAlbumAndAnArtist) {
  EXPECT_THAT(tracksOf(IPOD_PLAYLISTS, "Drive Home"), ElementsAre("Breakwater",
                                                                  "Fa\xE7"
                                                                  "ade"));
  EXPECT_THAT(tracksOf(IPOD_ALBUMS, "Untagged"), ElementsAre("Demo Tape"));
  EXPECT_THAT(tracksOf(IPOD_ARTISTS, "\xC9lodie Br\xFBlefer"), ElementsAre("Fa\xE7"
                                                                           "ade",
                                                                           "Stra\xDF"
                                                                           "e"));
}

TEST_F(MusicFolderSession, FollowsTheFilesSampleRates) {
  ipod.takeAudioCalls();
  tracksOf(IPOD_ALBUMS, "Harbour Sketches");
  IpodSongPlay(0);
  EXPECT_EQ(trackTexts().title, "Breakwater");
  EXPECT_EQ(trackTexts().genre, "\x05Jazz");
  IpodCommand(IPOD_NEXT_TRACK);
  EXPECT_TRUE(ipod.log.waitFor("SelectFrequency(32000 Hz)"));
  IpodCommand(IPOD_NEXT_TRACK);
  EXPECT_TRUE(ipod.log.waitFor("SelectFrequency(48000 Hz)"));
  EXPECT_THAT(ipod.takeAudioCalls(),
              ElementsAre("SelectFrequency(32000 Hz)", "SelectFrequency(48000 Hz)"));
}

// At the speed of fast-forward: eight times.
TEST_F(MusicFolderSession, PlaysEachTrackAsLongAsItsFile) {
  tracksOf(IPOD_ALBUMS, "Harbour Sketches");
  constexpr int kLengths[] = {6000, 4000, 5000};
  for (int track = 0; track < 3; ++track) {
    const auto begin = std::chrono::steady_clock::now();
    IpodSongPlay(track);
    IpodCommand(IPOD_START_FAST_FORWARD);
    EXPECT_TRUE(eventually([&] { return valueOf(IpodGetTrackIndex) != track; }));
    const auto time = std::chrono::steady_clock::now() - begin;
    IpodCommand(IPOD_END_SEEK);
    EXPECT_GE(time, simulator::milliseconds(kLengths[track] - 100) / 8) << track;
    ipod.look([&](simulator::SimulatedIpod& device) {
      const Track ended = byTitle(musicWith(device.library(), &Track::album, "Harbour Sketches"))
                              .at(static_cast<size_t>(track));
      EXPECT_NEAR(ended.lengthMs, kLengths[track], 100) << track;
    });
  }
}

TEST_F(MusicFolderSession, OmitsTheDamagedFile) {
  ASSERT_EQ(report.warnings.size(), 2u);
  EXPECT_THAT(report.warnings, testing::Contains(testing::StartsWith("Damaged/Scratched.flac")));
  EXPECT_THAT(report.warnings, testing::Contains(testing::StartsWith("Drive Home.m3u")));
  EXPECT_EQ(
      ipod.look([](simulator::SimulatedIpod& device) { return device.library().tracks.size(); }),
      10u);
}

}  // namespace
}  // namespace session
