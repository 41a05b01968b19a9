#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "music/music_library.h"
#include "music/music_summary.h"

namespace simulator {

/// The files of a folder that could not be used.
struct FolderReport {
  std::vector<std::string> warnings;  ///< one line each, which starts with a path within the folder
  SkippedFiles skipped;
};

/// Makes a library from the audio files and playlists in a folder and the folders below it, by the
/// rules of docs/music-library.md. What cannot be used is added to the report. A folder without
/// playable audio gives an empty library and a warning. Throws std::runtime_error when there is no
/// such folder.
MusicLibrary loadMusicFolder(const std::filesystem::path& folder, FolderReport& report);

}  // namespace simulator
