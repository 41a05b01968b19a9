#pragma once

#include <string>

namespace tool {

/// Converts a PNG to the bitmap that the library reads as the head unit's logo: 24 bits a pixel,
/// uncompressed, the bottom row first.
///
/// A picture that is larger than the screen is made smaller and keeps its shape; a smaller one
/// keeps its size. Transparent parts are shown over black, and black columns make the width a
/// multiple of 4. Throws std::runtime_error with one line for the user.
std::string convertLogo(const std::string& png, unsigned maxWidth, unsigned maxHeight);

}  // namespace tool
