#pragma once

#include <string>
#include <string_view>

namespace simulator {

/// Returns whether the bytes are well-formed UTF-8: no stray, missing or overlong bytes, no
/// surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view bytes);

/// Returns the bytes as UTF-8. They are unchanged when they are UTF-8, otherwise they are taken as
/// Latin-1, in which every byte is a character.
std::string toUtf8(std::string_view bytes);

/// Returns the text without the blanks, line ends and NULs with which taggers pad both ends.
std::string_view trimmed(std::string_view text);

/// Returns the text with the letters A to Z in lower case; other characters are unchanged.
std::string lowerCase(std::string_view text);

}  // namespace simulator
