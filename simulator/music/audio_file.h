#pragma once

#include <filesystem>
#include <optional>

#include "music/music_library.h"

namespace simulator {

/// Returns whether the name has the extension of an audio file, in small letters or capitals.
bool hasAudioExtension(const std::filesystem::path& file);

/// Returns the track that an audio file's tags describe. A text is empty and a number is 0 when
/// there is no such tag. Returns no track when the file cannot be read as its extension says, or
/// its length is 0.
std::optional<Track> readAudioFile(const std::filesystem::path& file);

}  // namespace simulator
