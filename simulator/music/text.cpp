#include "music/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace simulator {
namespace {

/// The form of a sequence with this lead byte.
struct Sequence {
  uint8_t firstLead;
  uint8_t lastLead;
  uint8_t length;         ///< bytes, the lead byte included
  uint8_t lowestSecond;   ///< the bounds of the second byte exclude overlong forms, surrogates
  uint8_t highestSecond;  ///< and code points above U+10FFFF
};

constexpr Sequence kSequences[] = {
    {0x00, 0x7F, 1, 0x00, 0x00}, {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
    {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
    {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

uint8_t byteAt(std::string_view bytes, size_t index) { return static_cast<uint8_t>(bytes[index]); }

/// Returns the length of the well-formed sequence that the bytes start with; 0 when there is none.
size_t sequenceLength(std::string_view bytes) {
  const uint8_t lead = byteAt(bytes, 0);
  const auto* sequence =
      std::find_if(std::begin(kSequences), std::end(kSequences), [lead](const Sequence& candidate) {
        return lead >= candidate.firstLead && lead <= candidate.lastLead;
      });
  if (sequence == std::end(kSequences) || bytes.size() < sequence->length) return 0;
  if (sequence->length == 1) return 1;
  const uint8_t second = byteAt(bytes, 1);
  if (second < sequence->lowestSecond || second > sequence->highestSecond) return 0;
  for (size_t i = 2; i < sequence->length; ++i) {
    if ((byteAt(bytes, i) & 0xC0) != 0x80) return 0;
  }
  return sequence->length;
}

std::string latin1ToUtf8(std::string_view bytes) {
  std::string text;
  for (size_t i = 0; i < bytes.size(); ++i) {
    const uint8_t character = byteAt(bytes, i);
    if (character < 0x80) {
      text += static_cast<char>(character);
    } else {
      text += static_cast<char>(0xC0 | (character >> 6));
      text += static_cast<char>(0x80 | (character & 0x3F));
    }
  }
  return text;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const size_t length = sequenceLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

std::string toUtf8(std::string_view bytes) {
  return isUtf8(bytes) ? std::string(bytes) : latin1ToUtf8(bytes);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kPadding(" \t\r\n\0", 5);
  const size_t first = text.find_first_not_of(kPadding);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kPadding) - first + 1);
}

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
    const bool isCapital = character >= 'A' && character <= 'Z';
    return isCapital ? static_cast<char>(character - 'A' + 'a') : character;
  });
  return lower;
}

}  // namespace simulator
