#include "music/m3u_playlist.h"

#include <algorithm>
#include <cstddef>

#include "music/text.h"

namespace simulator {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kNameTag = "#PLAYLIST:";

bool startsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

void addLine(M3uPlaylist& playlist, std::string_view line) {
  if (line.empty()) return;
  if (startsWith(line, kNameTag)) {
    playlist.name = trimmed(line.substr(kNameTag.size()));
  } else if (line.front() != '#') {
    playlist.entries.emplace_back(line);
  }
}

}  // namespace

M3uPlaylist parseM3u(std::string_view content) {
  if (startsWith(content, kByteOrderMark)) content.remove_prefix(kByteOrderMark.size());
  const std::string text = toUtf8(content);
  M3uPlaylist playlist;
  std::string_view rest = text;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
    addLine(playlist, trimmed(rest.substr(0, end)));
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return playlist;
}

}  // namespace simulator
