#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace simulator {

/// What an .m3u or .m3u8 file says.
struct M3uPlaylist {
  std::string name;                  ///< of its #PLAYLIST line; empty without one
  std::vector<std::string> entries;  ///< the paths, in the file's order, as they are written
};

/// Takes the file's content apart: UTF-8 with or without a byte order mark, or Latin-1; lines end
/// in CR, LF or both. The texts that come out are UTF-8.
M3uPlaylist parseM3u(std::string_view content);

}  // namespace simulator
