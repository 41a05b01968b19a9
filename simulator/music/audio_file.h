#pragma once

#include <filesystem>
#include <optional>

#include "music/music_library.h"

namespace simulator {

/// Whether the name ends as an audio file's does, in small letters or capitals.
bool hasAudioExtension(const std::filesystem::path& file);

/// The track that an audio file's tags describe; a text is empty and a number 0 where they say
/// nothing. No track when the file cannot be read as its extension promises, or plays no time.
std::optional<Track> readAudioFile(const std::filesystem::path& file);

}  // namespace simulator
