#pragma once

#include <filesystem>
#include <string>

#include "music/music_library.h"

namespace simulator {

/// Reads a library from a JSON file in the format of docs/music-library.md. Throws
/// std::runtime_error with a message that names the file and the place in it, for example
/// "library.json: tracks[3].lengthMs: must be a whole number from 0 to 4294967295".
MusicLibrary loadJsonLibrary(const std::filesystem::path& file);

/// Returns the library in the same format, with a line for each track or playlist. Default values
/// are left out. Bytes that are not UTF-8 become U+FFFD.
std::string toJson(const MusicLibrary& library);

}  // namespace simulator
