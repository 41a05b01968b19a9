#include "wire/printable.h"

#include <algorithm>
#include <cstdio>

namespace simulator {

namespace {

struct Range {
  uint32_t first;
  uint32_t last;
};

/// Controls beyond ASCII, separators of lines, and the characters of Unicode's category Cf, among
/// them those that change the direction of the text.
constexpr Range kShapeless[] = {
    {0x80, 0x9F},       {0xAD, 0xAD},       {0x600, 0x605},     {0x61C, 0x61C},
    {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x890, 0x891},     {0x8E2, 0x8E2},
    {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},   {0x2060, 0x206F},
    {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},   {0xFFFE, 0xFFFF},   {0x110BD, 0x110BD},
    {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A},
    {0xE0000, 0xE0FFF},
};

bool isShapeless(uint32_t character) {
  const auto contains = [=](Range range) {
    return character >= range.first && character <= range.last;
  };
  return std::any_of(std::begin(kShapeless), std::end(kShapeless), contains);
}

/// Returns the number of bytes that follow the first one; 4 when no character begins with it.
size_t followersOf(uint8_t first) {
  if (first < 0x80) return 0;
  if (first >= 0xC2 && first < 0xE0) return 1;
  if (first >= 0xE0 && first < 0xF0) return 2;
  return first >= 0xF0 && first < 0xF5 ? 3 : 4;
}

/// Returns whether a shorter form exists, or the number is a surrogate or too large.
bool isForbidden(uint32_t character, size_t followers) {
  constexpr uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
  return character < kSmallest[followers] || isSurrogate || character > 0x10FFFF;
}

std::string escapedByte(uint8_t byte) {
  char text[8];
  std::snprintf(text, sizeof text, "\\x%02X", byte);
  return text;
}

std::string escapedCharacter(uint32_t character) {
  char text[16];
  std::snprintf(text, sizeof text, "\\u{%X}", character);
  return text;
}

std::string printableWith(std::string_view utf8, std::string_view escapedByBackslash) {
  std::string text;
  while (!utf8.empty()) {
    const std::string_view before = utf8;
    const uint32_t character = takeCharacter(utf8);
    const std::string_view taken = before.substr(0, before.size() - utf8.size());
    const auto byte = static_cast<uint8_t>(taken.front());
    if (character == kNoCharacter || character < ' ' || character == 0x7F) {
      text += escapedByte(byte);
    } else if (isShapeless(character)) {
      text += escapedCharacter(character);
    } else {
      if (escapedByBackslash.find(taken.front()) != std::string_view::npos) text += '\\';
      text += taken;
    }
  }
  return text;
}

}  // namespace

uint32_t takeCharacter(std::string_view& utf8) {
  const auto first = static_cast<uint8_t>(utf8.front());
  const size_t followers = followersOf(first);
  utf8.remove_prefix(1);
  if (followers == 0) return first;
  if (followers > 3 || utf8.size() < followers) return kNoCharacter;
  uint32_t character = first & (0x3Fu >> followers);
  for (const char follower : utf8.substr(0, followers)) {
    if ((follower & 0xC0) != 0x80) return kNoCharacter;
    character = character << 6 | (follower & 0x3Fu);
  }
  if (isForbidden(character, followers)) return kNoCharacter;
  utf8.remove_prefix(followers);
  return character;
}

std::string printable(std::string_view utf8) { return printableWith(utf8, ""); }

std::string quoted(std::string_view utf8) { return '"' + printableWith(utf8, "\\\"") + '"'; }

}  // namespace simulator
