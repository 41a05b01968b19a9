#include "music/audio_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "audio_bytes.h"
#include "temporary_folder.h"

namespace simulator {
namespace {

using namespace std::string_view_literals;
namespace fs = std::filesystem;

const fs::path kTestMusic = TEST_MUSIC_FOLDER;

Track read(const fs::path& file) {
  const std::optional<Track> track = readAudioFile(file);
  if (!track) throw std::runtime_error("no track in " + file.string());
  return *track;
}

/// Returns the track of a FLAC file with these comments.
Track readTagged(std::initializer_list<std::string_view> comments) {
  const TemporaryFolder folder;
  return read(folder.write("tagged.flac", flacFile(44100, 44100, comments)));
}

TEST(ReadAudioFile, ReadsMp3) {
  const Track track = read(kTestMusic / "Lanterna Quartet/Harbour Sketches/03 Ropewalk.mp3");
  EXPECT_EQ(track.title, "Ropewalk, 9 \xE2\x82\xAC");
  EXPECT_EQ(track.artist, "Lanterna Quartet");
  EXPECT_EQ(track.album, "Harbour Sketches");
  EXPECT_EQ(track.genre, "Jazz");
  EXPECT_EQ(track.composer, "Cosima Quadri");
  EXPECT_EQ(track.kind, MediaKind::kMusic);
  EXPECT_EQ(track.discNumber, 1U);
  EXPECT_EQ(track.trackNumber, 3U);
  EXPECT_EQ(track.releaseYear, 2003U);
  EXPECT_EQ(track.sampleRate, 32000U);
  EXPECT_NEAR(track.lengthMs, 4000, 80);  // the encoder adds samples up to a whole frame
}

TEST(ReadAudioFile, ReadsFlac) {
  const Track track = read(kTestMusic /
                           "\xC3\x89lodie Br\xC3\xBBlefer/\xC3\x89t\xC3\xA9 indien/02 Stra\xC3\x9F"
                           "e.flac");
  EXPECT_EQ(track.title,
            "Stra\xC3\x9F"
            "e");
  EXPECT_EQ(track.artist, "\xC3\x89lodie Br\xC3\xBBlefer");
  EXPECT_EQ(track.releaseYear, 1999U);
  EXPECT_EQ(track.sampleRate, 48000U);
  EXPECT_EQ(track.lengthMs, 2000U);
}

TEST(ReadAudioFile, ReadsOggVorbis) {
  const Track track = read(kTestMusic /
                           "\xE5\xA4\x9C\xE6\xB1\xBD\xE8\xBB\x8A/\xE7\xAA\x93/"
                           "\xE9\xA7\x85.ogg");
  EXPECT_EQ(track.title, "\xE9\xA7\x85");
  EXPECT_EQ(track.trackNumber, 1U);
  EXPECT_EQ(track.sampleRate, 44100U);
  EXPECT_EQ(track.lengthMs, 3000U);
}

TEST(ReadAudioFile, ReadsOpus) {
  const Track track = read(kTestMusic /
                           "\xE5\xA4\x9C\xE6\xB1\xBD\xE8\xBB\x8A/\xE7\xAA\x93/"
                           "\xCE\xA9\xCE\xBC\xCE\xAD\xCE\xB3\xCE\xB1.opus");
  EXPECT_EQ(track.title, "\xCE\xA9\xCE\xBC\xCE\xAD\xCE\xB3\xCE\xB1 \xF0\x9F\x8C\x85");
  EXPECT_EQ(track.sampleRate, 48000U);
  EXPECT_NEAR(track.lengthMs, 4000, 20);
}

TEST(ReadAudioFile, ReadsWavWithoutTags) {
  const Track track = read(kTestMusic / "Untagged/Demo Tape.wav");
  EXPECT_EQ(track.title, "");
  EXPECT_EQ(track.artist, "");
  EXPECT_EQ(track.trackNumber, 0U);
  EXPECT_EQ(track.sampleRate, 44100U);
  EXPECT_EQ(track.lengthMs, 2000U);
}

TEST(ReadAudioFile, ReadsMpeg4AndTreatsM4bAsAnAudiobook) {
  const TemporaryFolder folder;
  const Track song = read(folder.write("song.m4a", mp4File(32000, 48000)));
  EXPECT_EQ(song.kind, MediaKind::kMusic);
  EXPECT_EQ(song.sampleRate, 32000U);
  EXPECT_EQ(song.lengthMs, 1500U);
  EXPECT_EQ(read(folder.write("book.m4b", mp4File(44100, 44100))).kind, MediaKind::kAudiobook);
  EXPECT_EQ(read(folder.write("BOOK.M4B", mp4File(44100, 44100))).kind, MediaKind::kAudiobook);
}

TEST(ReadAudioFile, RecognisesSpokenKindsByTheirGenre) {
  EXPECT_EQ(readTagged({"GENRE=Podcast"}).kind, MediaKind::kPodcast);
  EXPECT_EQ(readTagged({"GENRE=podcasts"}).kind, MediaKind::kPodcast);
  EXPECT_EQ(readTagged({"GENRE=AUDIOBOOK"}).kind, MediaKind::kAudiobook);
  EXPECT_EQ(readTagged({"GENRE=Audiobooks"}).kind, MediaKind::kAudiobook);
  EXPECT_EQ(readTagged({"GENRE=Audiobook music"}).kind, MediaKind::kMusic);
  EXPECT_EQ(readTagged({}).kind, MediaKind::kMusic);
  EXPECT_EQ(read(kTestMusic / "Spoken/Weather for Sailors 12.mp3").kind, MediaKind::kPodcast);
  EXPECT_EQ(read(kTestMusic / "Spoken/The Long Ferry 1.ogg").kind, MediaKind::kAudiobook);
}

TEST(ReadAudioFile, ReadsTheNumberAtTheStartOfATag) {
  const Track track =
      readTagged({"TRACKNUMBER=3/12", "DISCNUMBER= 02 of 2", "DATE=2004-05-01T10:00"});
  EXPECT_EQ(track.trackNumber, 3U);
  EXPECT_EQ(track.discNumber, 2U);
  EXPECT_EQ(track.releaseYear, 2004U);
}

TEST(ReadAudioFile, TreatsTagsThatAreNotNumbersAsUnknown) {
  const Track track = readTagged({"TRACKNUMBER=A1", "DISCNUMBER=-1", "DATE=99999999999"});
  EXPECT_EQ(track.trackNumber, 0U);
  EXPECT_EQ(track.discNumber, 0U);
  EXPECT_EQ(track.releaseYear, 0U);
}

TEST(ReadAudioFile, JoinsSeveralArtistsAndDropsPadding) {
  const Track track = readTagged({"ARTIST=One", "ARTIST=Two", "TITLE=  Padded \r\n"});
  EXPECT_EQ(track.artist, "One, Two");
  EXPECT_EQ(track.title, "Padded");
}

TEST(ReadAudioFile, ReturnsTextsWithoutNul) {
  EXPECT_EQ(readTagged({"TITLE=before\0after"sv}).title, "before");
}

TEST(ReadAudioFile, RefusesAFileWhoseContentDoesNotMatchItsExtension) {
  const TemporaryFolder folder;
  EXPECT_FALSE(readAudioFile(kTestMusic / "Damaged/Scratched.flac"));
  for (const char* name : {"a.mp3", "a.flac", "a.ogg", "a.opus", "a.m4a", "a.wav", "a.wma",
                           "a.aiff", "a.wv", "a.ape", "a.tta"}) {
    EXPECT_FALSE(readAudioFile(folder.write(name, "Only a letter to a friend.\n"))) << name;
    EXPECT_FALSE(readAudioFile(folder.write(name, ""))) << name;
  }
  EXPECT_FALSE(readAudioFile(folder.path() / "missing.mp3"));
}

TEST(ReadAudioFile, RefusesAudioOfNoLength) {
  const TemporaryFolder folder;
  EXPECT_FALSE(readAudioFile(folder.write("empty.flac", flacFile(44100, 0))));
}

TEST(ReadAudioFile, SurvivesAFileThatEndsAnywhere) {
  const TemporaryFolder folder;
  const std::string flac = flacFile(44100, 44100, {"TITLE=Cut"});
  const std::string mp4 = mp4File(44100, 44100);
  for (size_t length = 0; length < flac.size(); ++length) {
    readAudioFile(folder.write("cut.flac", flac.substr(0, length)));
  }
  for (size_t length = 0; length < mp4.size(); ++length) {
    readAudioFile(folder.write("cut.m4a", mp4.substr(0, length)));
  }
  EXPECT_TRUE(readAudioFile(folder.write("whole.flac", flac)));
}

TEST(HasAudioExtension, KnowsTheUsualFormatsInSmallAndCapitalLetters) {
  for (const char* name : {"a.mp3", "a.MP3", "a.flac", "a.ogg", "a.opus", "a.m4a", "a.m4b", "a.Wav",
                           "a.wma", "a.aif", "a.aiff", "b/a.b.mp3"}) {
    EXPECT_TRUE(hasAudioExtension(name)) << name;
  }
  for (const char* name :
       {"a.txt", "mp3", ".mp3", "a.mp3.jpg", "a.", "a", "a.m3u", "a.mp33", "a.mpc"}) {
    EXPECT_FALSE(hasAudioExtension(name)) << name;
  }
}

}  // namespace
}  // namespace simulator
