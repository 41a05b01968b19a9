// A playlist file.

#include <algorithm>
#include <string>
#include <string_view>

#include "music/m3u_playlist.h"
#include "music/text.h"
#include "support/require.h"

namespace {

/// Returns whether a text is UTF-8 without blanks around it, as the library shows it.
bool isClean(const std::string& text) {
  return simulator::isUtf8(text) && simulator::trimmed(text) == text;
}

bool isEntry(const std::string& text) {
  return !text.empty() && text.front() != '#' && text.find_first_of("\r\n") == std::string::npos &&
         isClean(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string content(data, data + size);
  const simulator::M3uPlaylist playlist = simulator::parseM3u(content);
  require(isClean(playlist.name), "a name that is not a clean text");
  require(std::all_of(playlist.entries.begin(), playlist.entries.end(), isEntry),
          "an entry that is not a path");
  require(simulator::lowerCase(content).size() == content.size(), "small letters of another size");
  return 0;
}
