#pragma once

#include <filesystem>
#include <string_view>

#include "device/personality.h"

namespace simulator {

/// Returns whether the text names a personality file, not a preset: it ends in ".json".
bool isPersonalityFile(const std::string& text);

/// Reads a personality from JSON; what it does not mention is as in the default preset. Throws
/// std::invalid_argument with one line for the user, for unknown keys and wrong values, too.
Personality parsePersonality(std::string_view text);

/// Reads a personality file. Throws std::invalid_argument, with the file's name in its message.
Personality readPersonality(const std::filesystem::path& file);

/// Returns a text that explains such files.
const char* personalityFileHelp();

}  // namespace simulator
