#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "music/music_library.h"

namespace simulator {

/// Makes a library from the audio files and playlists in a folder and the folders below it, by the
/// rules of docs/music-library.md. What could not be used is appended to `warnings`, a line each
/// that starts with the file's path within the folder. A folder without playable audio makes an
/// empty library and a warning. Throws std::runtime_error when there is no such folder.
MusicLibrary loadMusicFolder(const std::filesystem::path& folder,
                             std::vector<std::string>& warnings);

}  // namespace simulator
