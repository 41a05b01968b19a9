#include "iaptrace/redacted_text.h"

#include <algorithm>
#include <string_view>

#include "wire/frame.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

bool isVisible(uint8_t byte) { return byte >= 0x20 && byte != 0x7F; }

bool separatesFrames(uint8_t byte) {
  return byte == simulator::kStartByte || byte == simulator::kSyncByte;
}

/// A well-formed character of the same size; Latin-1 stays Latin-1.
const char* characterLike(size_t size, uint32_t character) {
  if (size == 2) return character <= 0xFF ? "\xC3\xA9" : "\xC4\x81";
  return size == 3 ? "\xE3\x81\x82" : "\xF0\x9F\x8E\xB5";
}

/// A byte that is not UTF-8 by one that is not for the same reason.
uint8_t brokenByteLike(uint8_t byte) {
  if (byte < 0xC0) return 0x80;  // the middle of a character
  if (byte < 0xC2) return 0xC0;  // a longer form than needed
  if (byte < 0xE0) return 0xC3;
  if (byte < 0xF0) return 0xE0;
  if (byte < 0xF8) return 0xF0;
  return byte == 0xFF ? byte : 0xF8;
}

/// The number of characters that look like a text; one beyond ASCII is hardly there by chance.
size_t charactersIn(std::string_view run) {
  constexpr size_t kBeyondAscii = 3;
  size_t count = 0;
  while (!run.empty()) {
    const uint32_t character = simulator::takeCharacter(run);
    if (character != simulator::kNoCharacter) count += character < 0x80 ? 1 : kBeyondAscii;
  }
  return count;
}

}  // namespace

void redactText(uint8_t* text, size_t size, char letter) {
  std::string_view left(reinterpret_cast<const char*>(text), size);
  while (!left.empty()) {
    uint8_t* const first = text + (size - left.size());
    const size_t before = left.size();
    const uint32_t character = simulator::takeCharacter(left);
    const size_t taken = before - left.size();
    if (character == simulator::kNoCharacter) {
      *first = brokenByteLike(*first);
    } else if (taken > 1) {
      std::copy_n(characterLike(taken, character), taken, first);
    } else if (isVisible(*first)) {
      *first = static_cast<uint8_t>(letter);
    }
  }
}

void redactLookalikes(uint8_t* bytes, size_t size, char letter, size_t shortest) {
  const auto belongs = [](uint8_t byte) { return isVisible(byte) && !separatesFrames(byte); };
  uint8_t* const end = bytes + size;
  for (uint8_t* run = std::find_if(bytes, end, belongs); run != end;) {
    uint8_t* const runEnd = std::find_if_not(run, end, belongs);
    const auto length = static_cast<size_t>(runEnd - run);
    const std::string_view text(reinterpret_cast<const char*>(run), length);
    if (charactersIn(text) >= shortest) redactText(run, length, letter);
    run = std::find_if(runEnd, end, belongs);
  }
}

}  // namespace iaptrace
