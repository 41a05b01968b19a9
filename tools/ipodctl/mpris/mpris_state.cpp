#include "ipodctl/mpris/mpris_state.h"

#include <tuple>

namespace tool {
namespace {

using nlohmann::json;

json valueAt(const json& document, const char* place) {
  const json::json_pointer pointer(place);
  return document.contains(pointer) ? document.at(pointer) : json();
}

std::string textAt(const json& document, const char* place) {
  const json value = valueAt(document, place);
  return value.is_string() ? value.get<std::string>() : "";
}

int64_t numberAt(const json& document, const char* place, int64_t otherwise) {
  const json value = valueAt(document, place);
  return value.is_number_integer() ? value.get<int64_t>() : otherwise;
}

std::string statusOf(const std::string& status) {
  if (status == "playing") return "Playing";
  return status == "paused" ? "Paused" : "Stopped";
}

std::string loopOf(const std::string& repeat) {
  if (repeat == "track") return "Track";
  return repeat == "all" ? "Playlist" : "None";
}

bool isConnected(const std::string& stage) {
  return stage == "ready" || stage == "odd" || stage == "settling";
}

auto trackOf(const MprisState& state) {
  return std::tie(state.hasTrack, state.index, state.title, state.artist, state.album, state.genre);
}

}  // namespace

bool MprisState::hasOtherTrack(const MprisState& other) const {
  return trackOf(*this) != trackOf(other);
}

bool MprisState::differs(const MprisState& other) const {
  return hasOtherTrack(other) ||
         std::tie(status, shuffle, loop) != std::tie(other.status, other.shuffle, other.loop);
}

MprisState mprisState(const json& state) {
  MprisState shown;
  if (!isConnected(textAt(state, "/connection/stage"))) return shown;
  const int64_t index = numberAt(state, "/playback/index", -1);
  const std::string shuffle = textAt(state, "/modes/shuffle");
  shown.status = statusOf(textAt(state, "/playback/status"));
  shown.shuffle = shuffle == "tracks" || shuffle == "albums";
  shown.loop = loopOf(textAt(state, "/modes/repeat"));
  if (index < 0) return shown;
  shown.hasTrack = true;
  shown.index = static_cast<int>(index);
  shown.title = textAt(state, "/playback/title");
  shown.artist = textAt(state, "/playback/artist");
  shown.album = textAt(state, "/playback/album");
  shown.genre = textAt(state, "/playback/genre");
  shown.position = 1000 * numberAt(state, "/playback/position_ms", 0);
  return shown;
}

}  // namespace tool
