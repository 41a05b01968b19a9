#include "music/json_library.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include "temporary_folder.h"

namespace simulator {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

MusicLibrary load(std::string_view json) {
  const TemporaryFolder folder;
  return loadJsonLibrary(folder.write("library.json", json));
}

std::string withoutFolder(const std::string& text, const TemporaryFolder& folder) {
  const std::string start = folder.path().string() + "/";
  return text.compare(0, start.size(), start) == 0 ? text.substr(start.size()) : text;
}

/// Returns the error's message from the file's name on.
std::string errorOf(std::string_view json) {
  const TemporaryFolder folder;
  try {
    loadJsonLibrary(folder.write("library.json", json));
  } catch (const std::runtime_error& error) {
    return withoutFolder(error.what(), folder);
  }
  return "no error";
}

TEST(LoadJsonLibrary, ReadsEveryField) {
  const MusicLibrary library = load(R"({
    "name": "Robin's iPod",
    "tracks": [
      {"title": "Breakwater", "artist": "Lanterna Quartet", "album": "Harbour Sketches",
       "genre": "Jazz", "composer": "Cosima Quadri", "kind": "audiobook", "disc": 2, "track": 7,
       "year": 2003, "lengthMs": 241000, "sampleRate": 48000}
    ],
    "playlists": [{"name": "Road", "tracks": [0, 0]}]
  })");
  EXPECT_EQ(library.name, "Robin's iPod");
  ASSERT_THAT(library.tracks, SizeIs(1));
  const Track& track = library.tracks[0];
  EXPECT_EQ(track.title, "Breakwater");
  EXPECT_EQ(track.artist, "Lanterna Quartet");
  EXPECT_EQ(track.album, "Harbour Sketches");
  EXPECT_EQ(track.genre, "Jazz");
  EXPECT_EQ(track.composer, "Cosima Quadri");
  EXPECT_EQ(track.kind, MediaKind::kAudiobook);
  EXPECT_EQ(track.discNumber, 2U);
  EXPECT_EQ(track.trackNumber, 7U);
  EXPECT_EQ(track.releaseYear, 2003U);
  EXPECT_EQ(track.lengthMs, 241000U);
  EXPECT_EQ(track.sampleRate, 48000U);
  ASSERT_THAT(library.playlists, SizeIs(1));
  EXPECT_EQ(library.playlists[0].name, "Road");
  EXPECT_THAT(library.playlists[0].tracks, ElementsAre(0, 0));
}

TEST(LoadJsonLibrary, UsesDefaultsForMissingKeys) {
  EXPECT_EQ(load("{}").name, "iPod");
  EXPECT_THAT(load("{}").tracks, IsEmpty());
  EXPECT_THAT(load("{}").playlists, IsEmpty());
  const MusicLibrary library = load(R"({"tracks": [{}], "playlists": [{}]})");
  EXPECT_EQ(library.tracks[0].title, "");
  EXPECT_EQ(library.tracks[0].kind, MediaKind::kMusic);
  EXPECT_EQ(library.tracks[0].lengthMs, 0U);
  EXPECT_EQ(library.tracks[0].sampleRate, 44100U);
  EXPECT_EQ(library.playlists[0].name, "");
  EXPECT_THAT(library.playlists[0].tracks, IsEmpty());
}

TEST(LoadJsonLibrary, ReadsEachKind) {
  const MusicLibrary library =
      load(R"({"tracks": [{"kind": "podcast"}, {"kind": "music"}, {"kind": "audiobook"}]})");
  EXPECT_EQ(library.tracks[0].kind, MediaKind::kPodcast);
  EXPECT_EQ(library.tracks[1].kind, MediaKind::kMusic);
  EXPECT_EQ(library.tracks[2].kind, MediaKind::kAudiobook);
}

TEST(LoadJsonLibrary, AcceptsTheLargestAndSmallestNumbers) {
  const MusicLibrary library =
      load(R"({"tracks": [{"lengthMs": 4294967295, "sampleRate": 1, "year": 0}]})");
  EXPECT_EQ(library.tracks[0].lengthMs, 4294967295U);
  EXPECT_EQ(library.tracks[0].sampleRate, 1U);
}

TEST(LoadJsonLibrary, AcceptsPlaylistsBeforeTheTracks) {
  const MusicLibrary library = load(R"({"playlists": [{"tracks": [1]}], "tracks": [{}, {}]})");
  EXPECT_THAT(library.playlists[0].tracks, ElementsAre(1));
}

TEST(LoadJsonLibrary, KeepsUtf8AndSkipsAByteOrderMark) {
  const MusicLibrary library =
      load("\xEF\xBB\xBF{\"tracks\": [{\"title\": \"\xE2\x82\xAC \\u00e9 \\ud83e\\uddfa\"}]}");
  EXPECT_EQ(library.tracks[0].title, "\xE2\x82\xAC \xC3\xA9 \xF0\x9F\xA7\xBA");
}

TEST(LoadJsonLibrary, ReportsThePlaceOfAWrongType) {
  EXPECT_EQ(errorOf("[]"), "library.json: the file: must be an object");
  EXPECT_EQ(errorOf(R"({"name": 3})"), "library.json: name: must be a text");
  EXPECT_EQ(errorOf(R"({"name": null})"), "library.json: name: must be a text");
  EXPECT_EQ(errorOf(R"({"tracks": {}})"), "library.json: tracks: must be an array");
  EXPECT_EQ(errorOf(R"({"tracks": [{}, 5]})"), "library.json: tracks[1]: must be an object");
  EXPECT_EQ(errorOf(R"({"tracks": [{"title": []}]})"),
            "library.json: tracks[0].title: must be a text");
  EXPECT_EQ(errorOf(R"({"playlists": 1})"), "library.json: playlists: must be an array");
  EXPECT_EQ(errorOf(R"({"playlists": [[]]})"), "library.json: playlists[0]: must be an object");
  EXPECT_EQ(errorOf(R"({"playlists": [{"name": true}]})"),
            "library.json: playlists[0].name: must be a text");
  EXPECT_EQ(errorOf(R"({"playlists": [{"tracks": "all"}]})"),
            "library.json: playlists[0].tracks: must be an array");
}

class WrongNumber : public testing::TestWithParam<std::string_view> {};

TEST_P(WrongNumber, IsRefusedWithItsPlaceAndRange) {
  const std::string json =
      R"({"tracks": [{}, {}, {}, {"lengthMs": )" + std::string(GetParam()) + "}]}";
  EXPECT_EQ(errorOf(json),
            "library.json: tracks[3].lengthMs: must be a whole number from 0 to 4294967295");
}

INSTANTIATE_TEST_SUITE_P(LengthMs, WrongNumber,
                         testing::Values("-1", "4294967296", "18446744073709551616", "1.5", "1e3",
                                         "\"180000\"", "true", "null", "[1]"));

TEST(LoadJsonLibrary, RefusesASampleRateOfZero) {
  EXPECT_EQ(errorOf(R"({"tracks": [{"sampleRate": 0}]})"),
            "library.json: tracks[0].sampleRate: must be a whole number from 1 to 4294967295");
}

TEST(LoadJsonLibrary, RefusesAnUnknownKind) {
  EXPECT_EQ(errorOf(R"({"tracks": [{"kind": "Music"}]})"),
            R"(library.json: tracks[0].kind: must be "music", "audiobook" or "podcast")");
  EXPECT_EQ(errorOf(R"({"tracks": [{"kind": 0}]})"),
            R"(library.json: tracks[0].kind: must be "music", "audiobook" or "podcast")");
}

TEST(LoadJsonLibrary, RefusesUnknownKeysAtEveryLevel) {
  EXPECT_EQ(errorOf(R"({"track": []})"), "library.json: track: unknown key");
  EXPECT_EQ(errorOf(R"({"tracks": [{"length": 1}]})"),
            "library.json: tracks[0].length: unknown key");
  EXPECT_EQ(errorOf(R"({"playlists": [{"title": "x"}]})"),
            "library.json: playlists[0].title: unknown key");
}

TEST(LoadJsonLibrary, RefusesIndexesBeyondTheTracks) {
  EXPECT_EQ(errorOf(R"({"tracks": [{}, {}], "playlists": [{}, {"tracks": [1, 2]}]})"),
            "library.json: playlists[1].tracks[1]: must be a whole number from 0 to 1");
  EXPECT_EQ(errorOf(R"({"tracks": [{}, {}], "playlists": [{"tracks": [-1]}]})"),
            "library.json: playlists[0].tracks[0]: must be a whole number from 0 to 1");
  EXPECT_EQ(errorOf(R"({"playlists": [{"tracks": [0]}]})"),
            "library.json: playlists[0].tracks[0]: the library has no tracks");
}

TEST(LoadJsonLibrary, RefusesANulInAText) {
  EXPECT_EQ(errorOf(R"({"tracks": [{"title": "a\u0000b"}]})"),
            "library.json: tracks[0].title: must not contain the character U+0000");
}

TEST(LoadJsonLibrary, ReportsThePlaceOfBrokenJson) {
  EXPECT_THAT(errorOf(""), StartsWith("library.json: parse error at line 1, column 1: "));
  EXPECT_THAT(errorOf("{\n  \"name\": \"x\",\n}"),
              StartsWith("library.json: parse error at line 3, column 1: "));
  EXPECT_THAT(errorOf("{} {}"), StartsWith("library.json: parse error at line 1, column 4: "));
  EXPECT_THAT(errorOf("{\"name\": \"caf\xE9\"}"),
              StartsWith("library.json: parse error at line 1, column 15: "));
  EXPECT_THAT(errorOf(R"({"tracks": [{"lengthMs": 1e999}]})"),
              StartsWith("library.json: number overflow parsing '1e999'"));
}

TEST(LoadJsonLibrary, RefusesDeepNestingBeforeParsing) {
  EXPECT_EQ(errorOf(std::string(1000000, '[')), "library.json: is nested deeper than 8 levels");
  EXPECT_EQ(errorOf(R"({"tracks": [{"title": [[[[[[]]]]]]}]})"),
            "library.json: is nested deeper than 8 levels");
  EXPECT_EQ(errorOf(R"({"tracks": [{"title": [[[[[]]]]]}]})"),
            "library.json: tracks[0].title: must be a text");
}

TEST(LoadJsonLibrary, IgnoresBracketsInTexts) {
  const MusicLibrary library =
      load(R"({"tracks": [{"title": "[[[[[[[[[\"[[[[[[[[["}], "name": "]]}}\\"})");
  EXPECT_EQ(library.tracks[0].title, "[[[[[[[[[\"[[[[[[[[[");
  EXPECT_EQ(library.name, "]]}}\\");
}

TEST(LoadJsonLibrary, AcceptsAnyNumberOfBracketsInOneLevel) {
  std::string tracks = "{}";
  for (int i = 1; i < 1000; ++i)
    tracks += ",{}";
  EXPECT_THAT(load("{\"tracks\": [" + tracks + "]}").tracks, SizeIs(1000));
}

TEST(LoadJsonLibrary, RefusesAHugeFile) {
  EXPECT_EQ(errorOf(std::string(33554433, ' ')), "library.json: is larger than 33554432 bytes");
}

TEST(LoadJsonLibrary, NamesAFileThatCannotBeRead) {
  const TemporaryFolder folder;
  try {
    loadJsonLibrary(folder.path() / "missing.json");
    FAIL() << "no error";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(withoutFolder(error.what(), folder), "missing.json: No such file or directory");
  }
}

TEST(ToJson, WritesOneLinePerTrackAndPlaylistWithoutDefaults) {
  MusicLibrary library;
  library.name = "Robin's \"iPod\"";
  library.tracks.resize(2);
  library.tracks[0] = {
      "Fa\xC3\xA7"
      "ade",
      "Somebody",
      "Album",
      "Genre",
      "Composer",
      MediaKind::kPodcast,
      1,
      2,
      1999,
      3000,
      48000};
  library.playlists = {{"Road", {1, 0}}, {"", {}}};
  EXPECT_EQ(toJson(library),
            "{\n"
            "  \"name\": \"Robin's \\\"iPod\\\"\",\n"
            "  \"tracks\": [\n"
            "    {\"title\":\"Fa\xC3\xA7"
            "ade\",\"artist\":\"Somebody\",\"album\":\"Album\","
            "\"genre\":\"Genre\",\"composer\":\"Composer\",\"kind\":\"podcast\",\"disc\":1,"
            "\"track\":2,\"year\":1999,\"lengthMs\":3000,\"sampleRate\":48000},\n"
            "    {}\n"
            "  ],\n"
            "  \"playlists\": [\n"
            "    {\"name\":\"Road\",\"tracks\":[1,0]},\n"
            "    {\"name\":\"\",\"tracks\":[]}\n"
            "  ]\n"
            "}\n");
}

TEST(ToJson, WritesAnEmptyLibrary) {
  EXPECT_EQ(toJson({}), "{\n  \"name\": \"\",\n  \"tracks\": [],\n  \"playlists\": []\n}\n");
}

TEST(ToJson, ReplacesWhatIsNotUtf8) {
  MusicLibrary library;
  library.name = "caf\xE9";
  EXPECT_THAT(toJson(library), StartsWith("{\n  \"name\": \"caf\xEF\xBF\xBD\""));
}

/// Returns the first block of the document that is marked as JSON.
std::string documentedExample() {
  std::ifstream stream(MUSIC_LIBRARY_DOCUMENT);
  const std::string text{std::istreambuf_iterator<char>(stream), {}};
  constexpr std::string_view kStart = "```json\n";
  const size_t start = text.find(kStart);
  if (start == std::string::npos) return "";
  const size_t end = text.find("```", start + kStart.size());
  return text.substr(start + kStart.size(), end - start - kStart.size());
}

TEST(LoadJsonLibrary, LoadsTheDocumentedExample) {
  const MusicLibrary library = load(documentedExample());
  EXPECT_EQ(library.name, "Robin's iPod");
  ASSERT_THAT(library.tracks, SizeIs(3));
  EXPECT_EQ(library.tracks[0].title, "Breakwater");
  EXPECT_EQ(library.tracks[0].lengthMs, 241000U);
  EXPECT_EQ(library.tracks[1].sampleRate, 48000U);
  EXPECT_EQ(library.tracks[2].kind, MediaKind::kPodcast);
  ASSERT_THAT(library.playlists, SizeIs(1));
  EXPECT_THAT(library.playlists[0].tracks, ElementsAre(1, 0));
}

}  // namespace
}  // namespace simulator
