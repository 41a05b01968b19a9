#pragma once

#include <string>
#include <string_view>

namespace simulator {

/// Whether the bytes are well-formed UTF-8: no stray, missing or overlong bytes, no surrogates,
/// nothing above U+10FFFF.
bool isUtf8(std::string_view bytes);

/// The bytes as UTF-8: unchanged when they already are, else taken as Latin-1, in which every byte
/// is a character.
std::string toUtf8(std::string_view bytes);

/// Without the blanks, line ends and NULs at both ends that taggers pad with.
std::string_view trimmed(std::string_view text);

/// With the letters A to Z made small; other characters stay as they are.
std::string lowerCase(std::string_view text);

}  // namespace simulator
