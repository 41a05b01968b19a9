#include "music/music_summary.h"

#include <gtest/gtest.h>

namespace simulator {
namespace {

Track trackOf(const std::string& artist, const std::string& album,
              MediaKind kind = MediaKind::kMusic) {
  Track track;
  track.artist = artist;
  track.album = album;
  track.kind = kind;
  return track;
}

TEST(MusicSummary, CountsEachNameOnce) {
  MusicLibrary library;
  library.tracks = {trackOf("Anna", "First"), trackOf("Anna", "Second"), trackOf("Carl", "First")};
  library.playlists = {{"Mix", {0}}, {"Empty", {}}, {"All", {0, 1, 2}}};
  EXPECT_EQ(summaryOf(library, {}), "music: 3 tracks, 2 artists, 2 albums, 3 playlists");
}

TEST(MusicSummary, UsesTheSingularForOne) {
  MusicLibrary library;
  library.tracks = {trackOf("Anna", "First")};
  library.playlists = {{"Mix", {0}}};
  EXPECT_EQ(summaryOf(library, {{"is broken", 1}}),
            "music: 1 track, 1 artist, 1 album, 1 playlist; 1 file skipped: is broken (1)");
}

TEST(MusicSummary, LeavesOutNamesThatTheIpodDoesNotList) {
  MusicLibrary library;
  library.tracks = {trackOf("", ""), trackOf("Reader", "Long Book", MediaKind::kAudiobook),
                    trackOf("Caster", "Daily", MediaKind::kPodcast)};
  EXPECT_EQ(summaryOf(library, {}), "music: 3 tracks, 0 artists, 0 albums, 0 playlists");
}

TEST(MusicSummary, ReportsWhyFilesWereSkipped) {
  EXPECT_EQ(summaryOf({}, {{"is broken", 2}, {"is too large", 3}}),
            "music: 0 tracks, 0 artists, 0 albums, 0 playlists; 5 files skipped: is broken (2), "
            "is too large (3)");
}

}  // namespace
}  // namespace simulator
