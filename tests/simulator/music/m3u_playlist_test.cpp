#include "music/m3u_playlist.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace simulator {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ParseM3u, ReturnsTheLinesThatAreNotCommentsInOrder) {
  const M3uPlaylist playlist = parseM3u(
      "#EXTM3U\n#EXTINF:12,Somebody - Something\nb/two.mp3\n# a remark\n/abs/one.flac\nb/two.mp3");
  EXPECT_THAT(playlist.entries, ElementsAre("b/two.mp3", "/abs/one.flac", "b/two.mp3"));
  EXPECT_EQ(playlist.name, "");
}

TEST(ParseM3u, EndsLinesAtEveryKindOfLineEnd) {
  EXPECT_THAT(parseM3u("a\r\nb\nc\rd\n\n\r\n").entries, ElementsAre("a", "b", "c", "d"));
}

TEST(ParseM3u, RemovesBlanksAroundAnEntryButNotInIt) {
  EXPECT_THAT(parseM3u("  my song.mp3 \t\n   \n").entries, ElementsAre("my song.mp3"));
}

TEST(ParseM3u, ReadsTheNameFromItsTag) {
  EXPECT_EQ(parseM3u("#EXTM3U\r\n#PLAYLIST: Road, late \r\na.mp3\r\n").name, "Road, late");
  EXPECT_EQ(parseM3u("#PLAYLIST:\n").name, "");
  EXPECT_EQ(parseM3u("#PLAYLISTS:x\n").name, "");
}

TEST(ParseM3u, SkipsAByteOrderMark) {
  const M3uPlaylist playlist = parseM3u("\xEF\xBB\xBF#PLAYLIST:X\na.mp3\n");
  EXPECT_EQ(playlist.name, "X");
  EXPECT_THAT(playlist.entries, ElementsAre("a.mp3"));
  EXPECT_THAT(parseM3u("\xEF\xBB\xBFsong.mp3").entries, ElementsAre("song.mp3"));
}

TEST(ParseM3u, KeepsUtf8AndConvertsLatin1) {
  EXPECT_THAT(parseM3u("\xE9\xA7\x85.ogg\n").entries, ElementsAre("\xE9\xA7\x85.ogg"));
  const M3uPlaylist latin1 = parseM3u(
      "#PLAYLIST:\xC9t\xE9\nFa\xE7"
      "ade.mp3\n");
  EXPECT_EQ(latin1.name, "\xC3\x89t\xC3\xA9");
  EXPECT_THAT(latin1.entries, ElementsAre("Fa\xC3\xA7"
                                          "ade.mp3"));
}

TEST(ParseM3u, FindsNothingInAnEmptyFile) {
  EXPECT_THAT(parseM3u("").entries, IsEmpty());
  EXPECT_THAT(parseM3u("\n\r\n").entries, IsEmpty());
  EXPECT_THAT(parseM3u("\0\0"s).entries, IsEmpty());
}

}  // namespace
}  // namespace simulator
