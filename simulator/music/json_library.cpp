#include "music/json_library.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string_view>

#include "music/file_content.h"

namespace simulator {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr size_t kLargestFile =
    size_t{32} * 1024 * 1024;       // bytes: room for more than 100,000 tracks
constexpr int kDeepestNesting = 8;  // the format itself has four levels
constexpr uint32_t kLargestNumber = std::numeric_limits<uint32_t>::max();
constexpr std::string_view kDefaultName = "iPod";

struct TextField {
  const char* key;
  std::string Track::*field;
};

struct NumberField {
  const char* key;
  uint32_t Track::*field;
  uint32_t lowest;
};

struct KindName {
  const char* name;
  MediaKind kind;
};

constexpr TextField kTextFields[] = {
    {"title", &Track::title}, {"artist", &Track::artist},     {"album", &Track::album},
    {"genre", &Track::genre}, {"composer", &Track::composer},
};

constexpr NumberField kNumberFields[] = {
    {"disc", &Track::discNumber, 0},       {"track", &Track::trackNumber, 0},
    {"year", &Track::releaseYear, 0},      {"lengthMs", &Track::lengthMs, 0},
    {"sampleRate", &Track::sampleRate, 1},
};

constexpr KindName kKindNames[] = {
    {"music", MediaKind::kMusic},
    {"audiobook", MediaKind::kAudiobook},
    {"podcast", MediaKind::kPodcast},
};

[[noreturn]] void fail(const std::string& place, const std::string& text) {
  throw std::runtime_error(place.empty() ? text : place + ": " + text);
}

std::string member(const std::string& place, const std::string& key) {
  return place.empty() ? key : place + "." + key;
}

std::string element(const std::string& place, size_t index) {
  return place + "[" + std::to_string(index) + "]";
}

std::string readText(const json& value, const std::string& place) {
  if (!value.is_string()) fail(place, "must be a text");
  auto text = value.get<std::string>();
  // On the wire a NUL ends the text.
  if (text.find('\0') != std::string::npos) fail(place, "must not contain the character U+0000");
  return text;
}

uint32_t readNumber(const json& value, const std::string& place, uint32_t lowest,
                    uint32_t highest) {
  const bool isWhole = value.is_number_unsigned();
  if (!isWhole || value.get<uint64_t>() < lowest || value.get<uint64_t>() > highest) {
    fail(place, "must be a whole number from " + std::to_string(lowest) + " to " +
                    std::to_string(highest));
  }
  return value.get<uint32_t>();
}

MediaKind readKind(const json& value, const std::string& place) {
  for (const KindName& kind : kKindNames) {
    if (value == kind.name) return kind.kind;
  }
  fail(place, R"(must be "music", "audiobook" or "podcast")");
}

void requireObject(const json& value, const std::string& place) {
  if (!value.is_object()) fail(place, "must be an object");
}

const json& requireArray(const json& value, const std::string& place) {
  if (!value.is_array()) fail(place, "must be an array");
  return value;
}

template <typename Field, size_t kCount>
const Field* findField(const Field (&fields)[kCount], const std::string& key) {
  const auto* field = std::find_if(std::begin(fields), std::end(fields),
                                   [&key](const Field& each) { return key == each.key; });
  return field == std::end(fields) ? nullptr : field;
}

void readTrackField(Track& track, const std::string& key, const json& value,
                    const std::string& place) {
  if (const TextField* text = findField(kTextFields, key)) {
    track.*(text->field) = readText(value, place);
  } else if (const NumberField* number = findField(kNumberFields, key)) {
    track.*(number->field) = readNumber(value, place, number->lowest, kLargestNumber);
  } else if (key == "kind") {
    track.kind = readKind(value, place);
  } else {
    fail(place, "unknown key");
  }
}

Track readTrack(const json& value, const std::string& place) {
  requireObject(value, place);
  Track track;
  for (const auto& [key, field] : value.items()) {
    readTrackField(track, key, field, member(place, key));
  }
  return track;
}

std::vector<uint32_t> readTrackIndexes(const json& value, const std::string& place,
                                       size_t trackCount) {
  std::vector<uint32_t> indexes;
  for (const json& index : requireArray(value, place)) {
    const std::string indexPlace = element(place, indexes.size());
    if (trackCount == 0) fail(indexPlace, "the library has no tracks");
    indexes.push_back(readNumber(index, indexPlace, 0, static_cast<uint32_t>(trackCount - 1)));
  }
  return indexes;
}

Playlist readPlaylist(const json& value, const std::string& place, size_t trackCount) {
  requireObject(value, place);
  Playlist playlist;
  for (const auto& [key, field] : value.items()) {
    const std::string fieldPlace = member(place, key);
    if (key == "name") {
      playlist.name = readText(field, fieldPlace);
    } else if (key == "tracks") {
      playlist.tracks = readTrackIndexes(field, fieldPlace, trackCount);
    } else {
      fail(fieldPlace, "unknown key");
    }
  }
  return playlist;
}

void readTracks(MusicLibrary& library, const json& value) {
  for (const json& track : requireArray(value, "tracks")) {
    library.tracks.push_back(readTrack(track, element("tracks", library.tracks.size())));
  }
}

void readPlaylists(MusicLibrary& library, const json& value) {
  for (const json& playlist : requireArray(value, "playlists")) {
    const std::string place = element("playlists", library.playlists.size());
    library.playlists.push_back(readPlaylist(playlist, place, library.tracks.size()));
  }
}

MusicLibrary readLibrary(const json& root) {
  requireObject(root, "the file");
  for (const auto& [key, value] : root.items()) {
    if (key != "name" && key != "tracks" && key != "playlists") fail(key, "unknown key");
  }
  MusicLibrary library;
  library.name = kDefaultName;
  if (root.contains("name")) library.name = readText(root["name"], "name");
  // Tracks first, wherever they are in the file: the playlists' indexes are compared with their
  // number.
  if (root.contains("tracks")) readTracks(library, root["tracks"]);
  if (root.contains("playlists")) readPlaylists(library, root["playlists"]);
  return library;
}

/// Checks the nesting before the parser runs, which needs many times the memory of the text for
/// nested arrays.
void refuseDeepNesting(std::string_view content) {
  int depth = 0;
  bool isInText = false;
  for (size_t i = 0; i < content.size(); ++i) {
    const char character = content[i];
    if (isInText && character == '\\') {
      ++i;
    } else if (character == '"') {
      isInText = !isInText;
    } else if (!isInText && (character == '[' || character == '{')) {
      if (++depth > kDeepestNesting) {
        fail("", "is nested deeper than " + std::to_string(kDeepestNesting) + " levels");
      }
    } else if (!isInText && (character == ']' || character == '}')) {
      --depth;
    }
  }
}

json parse(const std::string& content) {
  refuseDeepNesting(content);
  try {
    return json::parse(content);
  } catch (const json::exception& error) {
    // The text starts with the parser's name of the error, in brackets.
    const std::string text = error.what();
    const size_t bracket = text.find("] ");
    throw std::runtime_error(bracket == std::string::npos ? text : text.substr(bracket + 2));
  }
}

ordered_json trackToJson(const Track& track) {
  const Track defaults;
  ordered_json object = ordered_json::object();
  for (const TextField& text : kTextFields) {
    if (!(track.*(text.field)).empty()) object[text.key] = track.*(text.field);
  }
  for (const KindName& kind : kKindNames) {
    if (track.kind == kind.kind && kind.kind != defaults.kind) object["kind"] = kind.name;
  }
  for (const NumberField& number : kNumberFields) {
    if (track.*(number.field) != defaults.*(number.field)) {
      object[number.key] = track.*(number.field);
    }
  }
  return object;
}

ordered_json playlistToJson(const Playlist& playlist) {
  return ordered_json{{"name", playlist.name}, {"tracks", playlist.tracks}};
}

std::string oneLine(const ordered_json& value) {
  return value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

template <typename Item>
std::string lineEach(const std::vector<Item>& items, ordered_json (*toObject)(const Item&)) {
  std::string lines;
  for (const Item& item : items) {
    lines += (lines.empty() ? "\n    " : ",\n    ") + oneLine(toObject(item));
  }
  return "[" + (lines.empty() ? lines : lines + "\n  ") + "]";
}

}  // namespace

MusicLibrary loadJsonLibrary(const std::filesystem::path& file) {
  try {
    return readLibrary(parse(readFileContent(file, kLargestFile)));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file.string() + ": " + error.what());
  }
}

std::string toJson(const MusicLibrary& library) {
  return "{\n  \"name\": " + oneLine(library.name) +
         ",\n  \"tracks\": " + lineEach(library.tracks, trackToJson) +
         ",\n  \"playlists\": " + lineEach(library.playlists, playlistToJson) + "\n}\n";
}

}  // namespace simulator
