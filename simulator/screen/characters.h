#pragma once

#include <string>
#include <string_view>

namespace simulator {

/// Returns the characters of a text for the screen. Bytes that are not UTF-8 become U+FFFD, and
/// control characters blanks. Characters that only control the layout are left out. A text ends
/// after `most` characters.
std::u32string shownCharacters(std::string_view utf8, size_t most);

/// Returns the first character in upper case if it is a letter of ASCII; empty for an empty text.
std::u32string initialOf(std::string_view utf8);

}  // namespace simulator
