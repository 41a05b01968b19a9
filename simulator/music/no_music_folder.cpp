// The small simulator: it needs no library that reads audio files.
#include <stdexcept>

#include "music/music_folder.h"

namespace simulator {

MusicLibrary loadMusicFolder(const std::filesystem::path&, FolderReport&) {
  throw std::runtime_error(
      "--music: this ipodsim reads no audio files; describe the music in a file for --library, or "
      "use the ipodsim of a complete build");
}

}  // namespace simulator
