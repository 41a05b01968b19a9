#include "ipodctl/serve/list_path.h"

#include <ipodctl.h>

#include <charconv>

namespace tool {
namespace {

constexpr char kAllTracks[] = "all-tracks";
constexpr char kPlayAll[] = "all";

struct TypeRow {
  int type;
  const char* name;
  std::vector<std::string> opens;
};

/// The types 6 to 8 are named after the records that the iPod sends for them.
const std::vector<TypeRow>& typeTable() {
  static const std::vector<TypeRow> kTypes = {
      {IPOD_ARTISTS, "artists", {"albums", kAllTracks}},
      {IPOD_ALBUMS, "albums", {"tracks"}},
      {IPOD_PLAYLISTS, "playlists", {"tracks"}},
      {IPOD_GENRES, "genres", {"artists", "albums", kAllTracks}},
      {IPOD_TRACKS, "tracks", {}},
      {IPOD_TYPE_6, "composers", {"albums", kAllTracks}},
      {IPOD_TYPE_7, "audiobooks", {"tracks"}},
      {IPOD_TYPE_8, "podcasts", {"tracks"}}};
  return kTypes;
}

std::vector<std::string> partsOf(const std::string& text) {
  std::vector<std::string> parts(1);
  for (const char each : text) {
    if (each == '/') {
      parts.emplace_back();
    } else {
      parts.back() += each;
    }
  }
  return parts;
}

std::optional<ListStep> stepNamed(const std::string& name, int index) {
  if (name == kAllTracks) return ListStep{index, IPOD_TRACKS, true};
  for (const TypeRow& row : typeTable()) {
    if (row.name == name) return ListStep{index, row.type, false};
  }
  return std::nullopt;
}

std::optional<int> indexNamed(const std::string& text) {
  if (text == kPlayAll) return kPlayAllIndex;
  int index = 0;
  const char* const end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, index);
  if (parsed.ec != std::errc() || parsed.ptr != end || index < 0) return std::nullopt;
  return index;
}

}  // namespace

bool operator==(const ListStep& left, const ListStep& right) {
  return left.index == right.index && left.type == right.type &&
         left.tracksOfSelection == right.tracksOfSelection;
}

std::optional<ListPath> parseListPath(const std::string& text) {
  const std::vector<std::string> parts = partsOf(text);
  if (parts.size() % 2 == 0 || parts.size() / 2 >= kMostLevels) return std::nullopt;
  ListPath path;
  for (size_t i = 0; i < parts.size(); i += 2) {
    const std::optional<int> index = i == 0 ? 0 : indexNamed(parts[i - 1]);
    const std::optional<ListStep> step = stepNamed(parts[i], index.value_or(0));
    if (!index || !step || (i == 0 && step->tracksOfSelection)) return std::nullopt;
    if (!path.empty() && path.back().type == IPOD_TRACKS) return std::nullopt;
    path.push_back(*step);
  }
  return path;
}

std::string textOf(const ListPath& path) {
  std::string text = nameOf(path.front());
  for (size_t i = 1; i < path.size(); ++i) {
    const int index = path[i].index;
    text += "/" + (index == kPlayAllIndex ? kPlayAll : std::to_string(index)) + "/";
    text += nameOf(path[i]);
  }
  return text;
}

ListPath parentOf(const ListPath& path) { return ListPath(path.begin(), path.end() - 1); }

std::string nameOf(const ListStep& step) {
  if (step.tracksOfSelection) return kAllTracks;
  for (const TypeRow& row : typeTable()) {
    if (row.type == step.type) return row.name;
  }
  return "";
}

std::vector<std::string> openedBy(int type) {
  for (const TypeRow& row : typeTable()) {
    if (row.type == type) return row.opens;
  }
  return {};
}

}  // namespace tool
