#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "music/music_library.h"

namespace simulator {

/// The number of files that were left out, by the reason.
using SkippedFiles = std::map<std::string, size_t>;

/// Returns one line for the user: "music: 3 tracks, 1 artist, 2 albums, 0 playlists; 1 file
/// skipped: no playable audio found in it (1)". Artists and albums are those of the music, as the
/// iPod lists them; tracks are all.
std::string summaryOf(const MusicLibrary& library, const SkippedFiles& skipped);

}  // namespace simulator
