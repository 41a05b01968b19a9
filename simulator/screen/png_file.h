#pragma once

#include <filesystem>

#include "screen/display_image.h"

namespace simulator {

/// Throws std::runtime_error with a message for the user when no picture can be written there.
/// Leaves no file.
void requirePlaceForPng(const std::filesystem::path& file);

/// Returns the bytes of a PNG file. Throws std::runtime_error.
Bytes encodePng(const Picture& picture);

/// Writes the picture as a PNG file. A reader of the file sees the old picture or the new one,
/// never a part of one. Throws std::runtime_error with a message for the user.
void writePng(const Picture& picture, const std::filesystem::path& file);

}  // namespace simulator
