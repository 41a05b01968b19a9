#include "screen/characters.h"

namespace simulator {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Sequence {
  char32_t character = kReplacement;
  size_t bytes = 1;
};

uint8_t byteAt(std::string_view text, size_t index) { return static_cast<uint8_t>(text[index]); }

/// Returns the length that the first byte announces, or 0.
size_t announcedLength(uint8_t first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (first >= 0xE0 && first <= 0xEF) return 3;
  if (first >= 0xF0 && first <= 0xF4) return 4;
  return 0;
}

bool isValid(char32_t character, size_t length) {
  constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  return character >= kLeast[length] && character <= 0x10FFFF && !isSurrogate;
}

/// Decodes the character at the start of a text that is not empty.
Sequence firstOf(std::string_view text) {
  const size_t length = announcedLength(byteAt(text, 0));
  if (length == 1) return {byteAt(text, 0), 1};
  if (length == 0 || length > text.size()) return {};
  char32_t character = byteAt(text, 0) & (0x7Fu >> length);
  for (size_t i = 1; i < length; ++i) {
    if ((byteAt(text, i) & 0xC0) != 0x80) return {};
    character = character << 6 | (byteAt(text, i) & 0x3Fu);
  }
  return isValid(character, length) ? Sequence{character, length} : Sequence{};
}

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0x2028 ||
         character == 0x2029;
}

/// Returns whether a character has no width and no picture: joiners, marks of direction, the byte
/// order mark, and selectors of a variant.
bool isLayout(char32_t character) {
  return (character >= 0x200B && character <= 0x200F) ||
         (character >= 0x202A && character <= 0x202E) ||
         (character >= 0x2060 && character <= 0x206F) ||
         (character >= 0xFE00 && character <= 0xFE0F) || character == 0xFEFF || character == 0xAD;
}

}  // namespace

std::u32string shownCharacters(std::string_view utf8, size_t most) {
  std::u32string characters;
  while (!utf8.empty() && characters.size() < most) {
    const Sequence next = firstOf(utf8);
    utf8.remove_prefix(next.bytes);
    if (isLayout(next.character)) continue;
    characters += isControl(next.character) ? U' ' : next.character;
  }
  return characters;
}

std::u32string initialOf(std::string_view utf8) {
  std::u32string initial = shownCharacters(utf8, 1);
  if (!initial.empty() && initial[0] >= U'a' && initial[0] <= U'z') initial[0] -= U'a' - U'A';
  return initial;
}

}  // namespace simulator
