#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// The content of an .m3u or .m3u8 file.
struct M3uPlaylist {
  std::string name;                  ///< of its #PLAYLIST line; empty without one
  std::vector<std::string> entries;  ///< the paths, in the file's order, as they are written
};

/// Parses the file's content: UTF-8 with or without a byte order mark, or Latin-1; lines end in CR,
/// LF or both. The resulting texts are UTF-8.
M3uPlaylist parseM3u(std::string_view content);

}  // namespace simulator
