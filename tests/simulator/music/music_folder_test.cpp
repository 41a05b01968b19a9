#include "music/music_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "audio_bytes.h"
#include "temporary_folder.h"

namespace simulator {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class MusicFolder : public testing::Test {
 protected:
  /// Writes a file with a second of untagged audio.
  void addSong(const fs::path& name) {
    folder.write(fs::path("Music") / name, flacFile(44100, 44100));
  }
  void addTagged(const fs::path& name, std::initializer_list<std::string_view> comments) {
    folder.write(fs::path("Music") / name, flacFile(44100, 44100, comments));
  }
  void addFile(const fs::path& name, std::string_view content) {
    folder.write(fs::path("Music") / name, content);
  }
  void addLink(const fs::path& name, const fs::path& target) {
    fs::create_symlink(target, music() / name);
  }
  fs::path music() const { return folder.path() / "Music"; }
  MusicLibrary load() { return loadMusicFolder(music(), report); }

  std::vector<std::string> titles() {
    std::vector<std::string> texts;
    for (const Track& track : load().tracks)
      texts.push_back(track.title);
    return texts;
  }
  /// Returns the titles of the only playlist's tracks.
  std::vector<std::string> playlistTitles() {
    const MusicLibrary library = load();
    EXPECT_THAT(library.playlists, SizeIs(1));
    std::vector<std::string> texts;
    for (uint32_t index : library.playlists.at(0).tracks) {
      texts.push_back(library.tracks.at(index).title);
    }
    return texts;
  }
  std::string errorOf(const fs::path& path) {
    try {
      loadMusicFolder(path, report);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no error";
  }

  TemporaryFolder folder;
  FolderReport report;
  const std::vector<std::string>& warnings = report.warnings;
};

TEST_F(MusicFolder, ReturnsTracksInTheOrderOfTheirPaths) {
  addSong("b/two.flac");
  addSong("a.flac");
  addSong("c.FLAC");
  addSong("b/one.flac");
  addSong("b/deep/down/three.flac");
  EXPECT_THAT(titles(), ElementsAre("a", "three", "one", "two", "c"));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(MusicFolder, HasTheFoldersName) {
  addSong("a.flac");
  EXPECT_EQ(load().name, "Music");
  EXPECT_EQ(loadMusicFolder(music() / "", report).name, "Music");
  EXPECT_EQ(loadMusicFolder(music() / "..", report).name, folder.path().filename());
}

TEST_F(MusicFolder, NamesUntaggedTracksAfterFileAndFolders) {
  addSong("Artist/Album/03 Song.v2.flac");
  const Track track = load().tracks.at(0);
  EXPECT_EQ(track.title, "03 Song.v2");
  EXPECT_EQ(track.album, "Album");
  EXPECT_EQ(track.artist, "Artist");
  EXPECT_EQ(track.genre, "");
  EXPECT_EQ(track.composer, "");
}

TEST_F(MusicFolder, UsesTheTwoNearestFoldersForNames) {
  addSong("Collection/Artist/Album/Song.flac");
  EXPECT_EQ(load().tracks.at(0).album, "Album");
  EXPECT_EQ(load().tracks.at(0).artist, "Artist");
}

TEST_F(MusicFolder, UsesUnknownWithoutAFolder) {
  addSong("Album/one.flac");
  addSong("two.flac");
  const MusicLibrary library = loadMusicFolder(music() / "", report);
  EXPECT_EQ(library.tracks.at(0).album, "Album");
  EXPECT_EQ(library.tracks.at(0).artist, "Unknown Artist");
  EXPECT_EQ(library.tracks.at(1).album, "Unknown Album");
  EXPECT_EQ(library.tracks.at(1).artist, "Unknown Artist");
}

TEST_F(MusicFolder, PrefersTagsToNamesTextByText) {
  addTagged("Folder/File.flac", {"ARTIST=Tagged Artist"});
  addTagged("Folder/Other.flac", {"TITLE=Tagged Title", "ALBUM=Tagged Album"});
  const MusicLibrary library = load();
  EXPECT_EQ(library.tracks.at(0).title, "File");
  EXPECT_EQ(library.tracks.at(0).artist, "Tagged Artist");
  EXPECT_EQ(library.tracks.at(0).album, "Folder");
  EXPECT_EQ(library.tracks.at(1).title, "Tagged Title");
  EXPECT_EQ(library.tracks.at(1).artist, "Unknown Artist");
  EXPECT_EQ(library.tracks.at(1).album, "Tagged Album");
}

TEST_F(MusicFolder, TreatsFileNamesThatAreNotUtf8AsLatin1) {
  addSong(
      "Caf\xE9/Fa\xE7"
      "ade.flac");
  const Track track = load().tracks.at(0);
  EXPECT_EQ(track.title,
            "Fa\xC3\xA7"
            "ade");
  EXPECT_EQ(track.album, "Caf\xC3\xA9");
}

TEST_F(MusicFolder, IgnoresOtherFilesSilentlyAndWarnsOfDamagedOnes) {
  addSong("a.flac");
  addFile("cover.jpg", "not really");
  addFile("notes", "x");
  addFile("b/broken.mp3", "no frames in here");
  addFile("b/empty.ogg", "");
  EXPECT_THAT(titles(), ElementsAre("a"));
  EXPECT_THAT(warnings, ElementsAre("b/broken.mp3: no playable audio found in it",
                                    "b/empty.ogg: no playable audio found in it"));
  EXPECT_THAT(report.skipped, ElementsAre(Pair("no playable audio found in it", 2)));
}

TEST_F(MusicFolder, FollowsLinksToFilesAndFolders) {
  folder.write("elsewhere/outside.flac", flacFile(44100, 44100));
  folder.write("elsewhere/album/inside.flac", flacFile(44100, 44100));
  addSong("a.flac");
  addLink("file.flac", "../elsewhere/outside.flac");
  addLink("folder", "../elsewhere/album");
  EXPECT_THAT(titles(), ElementsAre("a", "file", "inside"));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(MusicFolder, ReadsAFileThatLinksReachTwiceOnlyOnce) {
  addSong("a/song.flac");
  addLink("a/again.flac", "song.flac");
  addLink("a/up", "..");
  addLink("a/self", ".");
  addLink("b", "a");
  EXPECT_THAT(titles(), ElementsAre("again"));
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(MusicFolder, WarnsOfLinksThatLeadNowhere) {
  addSong("a.flac");
  addLink("gone.mp3", "nowhere.mp3");
  addLink("loop.m3u", "loop.m3u");
  addLink("gone.txt", "nowhere.txt");
  EXPECT_THAT(titles(), ElementsAre("a"));
  EXPECT_THAT(warnings, ElementsAre("gone.mp3: is not a file that can be read",
                                    "loop.m3u: is not a file that can be read"));
  EXPECT_THAT(report.skipped, ElementsAre(Pair("is not a file that can be read", 2)));
}

TEST_F(MusicFolder, SkipsAPlaylistThatIsTooLarge) {
  addSong("one.flac");
  addFile("road.m3u", "");
  fs::resize_file(music() / "road.m3u", 16 * 1024 * 1024 + 1);
  EXPECT_THAT(load().playlists, IsEmpty());
  EXPECT_THAT(warnings, ElementsAre("road.m3u: is larger than 16777216 bytes"));
  EXPECT_THAT(report.skipped, ElementsAre(Pair("is larger than 16777216 bytes", 1)));
}

TEST_F(MusicFolder, DoesNotWaitForAPipe) {
  addSong("a.flac");
  ASSERT_EQ(mkfifo((music() / "pipe.mp3").c_str(), 0600), 0);
  ASSERT_EQ(mkfifo((music() / "pipe.m3u").c_str(), 0600), 0);
  EXPECT_THAT(titles(), ElementsAre("a"));
  EXPECT_THAT(warnings, ElementsAre("pipe.m3u: is not a file that can be read",
                                    "pipe.mp3: is not a file that can be read"));
}

TEST_F(MusicFolder, ReadsAFolderThatIsNamedLikeAFile) {
  addSong("mix.mp3/song.flac");
  addSong("list.m3u/other.flac");
  EXPECT_THAT(titles(), ElementsAre("other", "song"));
}

TEST_F(MusicFolder, MakesAPlaylistOfRelativeAndAbsolutePaths) {
  addSong("album/one.flac");
  addSong("two.flac");
  addFile("lists/road.m3u", "../two.flac\r\n" + (music() / "album/one.flac").string() +
                                "\r\n./../album/../two.flac\r\n");
  EXPECT_THAT(playlistTitles(), ElementsAre("two", "one", "two"));
  EXPECT_EQ(load().playlists.at(0).name, "road");
  EXPECT_THAT(warnings, IsEmpty());
}

TEST_F(MusicFolder, NamesAPlaylistByItsTag) {
  addSong("one.flac");
  addFile("road.M3U8", "\xEF\xBB\xBF#EXTM3U\n#PLAYLIST:Late Road\none.flac\n");
  EXPECT_EQ(load().playlists.at(0).name, "Late Road");
}

TEST_F(MusicFolder, FindsEntriesWithLatin1LettersAndBackslashes) {
  addSong(
      "\xC3\x89t\xC3\xA9/Fa\xC3\xA7"
      "ade.flac");
  addFile("road.m3u",
          "\xC9t\xE9\\Fa\xE7"
          "ade.flac\r\n");
  EXPECT_THAT(playlistTitles(), ElementsAre("Fa\xC3\xA7"
                                            "ade"));
}

TEST_F(MusicFolder, FindsEntriesThroughLinks) {
  addSong("a/song.flac");
  addLink("b", "a");
  addFile("road.m3u", "b/song.flac\n");
  EXPECT_THAT(playlistTitles(), ElementsAre("song"));
}

TEST_F(MusicFolder, WarnsOfPlaylistEntriesThatAreNotInTheLibrary) {
  addSong("one.flac");
  addFile("broken.mp3", "x");
  folder.write("outside.flac", flacFile(44100, 44100));
  addFile("road.m3u", "gone.mp3\none.flac\nbroken.mp3\n../outside.flac\n.\nroad.m3u\n" +
                          std::string(5000, 'x') + "\n");
  EXPECT_THAT(playlistTitles(), ElementsAre("one"));
  EXPECT_THAT(report.skipped, ElementsAre(Pair("no playable audio found in it", 1)));
  EXPECT_THAT(warnings, ElementsAre("broken.mp3: no playable audio found in it",
                                    "road.m3u: not in the library: gone.mp3",
                                    "road.m3u: not in the library: broken.mp3",
                                    "road.m3u: not in the library: ../outside.flac",
                                    "road.m3u: not in the library: .",
                                    "road.m3u: not in the library: road.m3u",
                                    "road.m3u: not in the library: " + std::string(5000, 'x')));
}

TEST_F(MusicFolder, KeepsAPlaylistThatIsEmpty) {
  addSong("one.flac");
  addFile("nothing.m3u", "#EXTM3U\n");
  EXPECT_THAT(playlistTitles(), IsEmpty());
}

TEST_F(MusicFolder, IsEmptyWithAWarningWhenThereIsNoAudio) {
  addFile("notes.txt", "x");
  const MusicLibrary library = load();
  EXPECT_THAT(library.tracks, IsEmpty());
  EXPECT_EQ(library.name, "Music");
  EXPECT_THAT(warnings, ElementsAre(music().string() + ": no playable audio found in this folder"));
}

TEST_F(MusicFolder, KeepsEarlierWarningsOfTheReport) {
  report.warnings = {"earlier"};
  addSong("a.flac");
  addFile("broken.mp3", "x");
  load();
  EXPECT_THAT(warnings, ElementsAre("earlier", "broken.mp3: no playable audio found in it"));
}

TEST_F(MusicFolder, ThrowsWhenThereIsNoSuchFolder) {
  const fs::path missing = folder.path() / "missing";
  EXPECT_EQ(errorOf(missing), "music folder " + missing.string() + ": does not exist");
  const fs::path file = folder.write("file.mp3", "x");
  EXPECT_EQ(errorOf(file), "music folder " + file.string() + ": is not a folder");
  EXPECT_EQ(errorOf(file / "below"),
            "music folder " + (file / "below").string() + ": does not exist");
}

TEST_F(MusicFolder, ReadsARealCollection) {
  const MusicLibrary library = loadMusicFolder(TEST_MUSIC_FOLDER, report);
  std::vector<std::string> all;
  for (const Track& track : library.tracks)
    all.push_back(track.artist + ": " + track.title);
  EXPECT_THAT(all, ElementsAre("Lanterna Quartet: Breakwater", "Lanterna Quartet: Slipway",
                               "Lanterna Quartet: Ropewalk, 9 €", "Harriet Molescombe: Chapter 1",
                               "Port Amity Public Radio: Weather for Sailors 12",
                               "Unknown Artist: Demo Tape", "Élodie Brûlefer: Façade",
                               "Élodie Brûlefer: Straße", "夜汽車: Ωμέγα 🌅", "夜汽車: 駅"));
  ASSERT_THAT(library.files, SizeIs(10));
  EXPECT_EQ(library.files[1],
            std::string(TEST_MUSIC_FOLDER) + "/Lanterna Quartet/Harbour Sketches/02 Slipway.mp3");
  ASSERT_THAT(library.playlists, SizeIs(2));
  EXPECT_EQ(library.playlists[0].name, "Drive Home");
  EXPECT_THAT(library.playlists[0].tracks, ElementsAre(0, 6));
  EXPECT_EQ(library.playlists[1].name, "Nachtfahrt für zwei");
  EXPECT_THAT(library.playlists[1].tracks, ElementsAre(9, 8, 5));
  EXPECT_THAT(warnings, ElementsAre("Damaged/Scratched.flac: no playable audio found in it",
                                    "Drive Home.m3u: not in the library: Lost/Never Recorded.mp3"));
}

}  // namespace
}  // namespace simulator
