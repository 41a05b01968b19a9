#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace simulator {

/// Takes the first character from a text in UTF-8. Returns its code point, or kNoCharacter when the
/// text does not begin with a well-formed one; then one byte is taken.
constexpr uint32_t kNoCharacter = 0xFFFFFFFF;
uint32_t takeCharacter(std::string_view& utf8);

/// Returns a text from the wire as a terminal may show it. Control characters are written as \x0A,
/// bytes that are not UTF-8 as \xFF, and characters without a shape, which can reorder or hide
/// others, as \u{202E}.
std::string printable(std::string_view utf8);

/// Returns the same in quotation marks, with a backslash before each backslash and quotation mark.
std::string quoted(std::string_view utf8);

}  // namespace simulator
