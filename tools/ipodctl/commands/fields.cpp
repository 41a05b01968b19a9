#include "ipodctl/commands/fields.h"

#include <cstdio>

namespace tool {
namespace {

using nlohmann::json;

struct FieldRow {
  const char* name;
  const char* place;  ///< in the state document
};

constexpr char kPositionPlace[] = "/playback/position_ms";

constexpr FieldRow kStateFields[] = {{"status", "/playback/status"},
                                     {"title", "/playback/title"},
                                     {"artist", "/playback/artist"},
                                     {"album", "/playback/album"},
                                     {"genre", "/playback/genre"},
                                     {"index", "/playback/index"},
                                     {"tracks", "/playback/tracks"},
                                     {"position", kPositionPlace},
                                     {"position_ms", kPositionPlace},
                                     {"origin", "/playback/origin/path"},
                                     {"origin_name", "/playback/origin/name"},
                                     {"shuffle", "/modes/shuffle"},
                                     {"repeat", "/modes/repeat"},
                                     {"sample_rate", "/audio/sample_rate"},
                                     {"logo", "/logo/file"},
                                     {"stage", "/connection/stage"},
                                     {"message", "/connection/message"},
                                     {"name", "/ipod/name"},
                                     {"serial", "/ipod/serial"},
                                     {"generation", "/generation"}};

/// Objects and lists are not values of a field.
std::string valueText(const json& value) {
  if (value.is_string()) return value.get<std::string>();
  return value.is_number() || value.is_boolean() ? value.dump() : "";
}

std::string timeText(const json& position) {
  if (!position.is_number_integer()) return "";
  const auto seconds = position.get<int64_t>() / 1000;
  char text[32];
  std::snprintf(text, sizeof text, "%lld:%02d", static_cast<long long>(seconds / 60),
                static_cast<int>(seconds % 60));
  return text;
}

json valueAt(const json& document, const char* place) {
  const json::json_pointer pointer(place);
  return document.contains(pointer) ? document.at(pointer) : json();
}

std::string opensOf(const json& item) {
  std::string text;
  const json opens = item.is_object() ? item.value("opens", json()) : json();
  for (const json& each : opens)
    text += (text.empty() ? "" : ", ") + valueText(each);
  return text;
}

}  // namespace

const std::vector<std::string>& stateFields() {
  static const std::vector<std::string> kNames = [] {
    std::vector<std::string> names;
    for (const FieldRow& row : kStateFields)
      names.emplace_back(row.name);
    return names;
  }();
  return kNames;
}

std::string stateField(const json& state, const std::string& name) {
  for (const FieldRow& row : kStateFields) {
    if (name != row.name) continue;
    const json value = valueAt(state, row.place);
    return name == "position" ? timeText(value) : valueText(value);
  }
  return "";
}

const std::vector<std::string>& itemFields() {
  static const std::vector<std::string> kNames = {"index", "name", "opens", "path"};
  return kNames;
}

std::string itemField(const json& item, const std::string& path, const std::string& name) {
  if (name == "opens") return opensOf(item);
  if (name == "path") return path + "/" + itemField(item, path, "index");
  return item.is_object() && item.contains(name) ? valueText(item.at(name)) : "";
}

}  // namespace tool
