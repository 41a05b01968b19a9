// The texts of LingoMessage: the iPod's UTF-8 is converted to the library's 8-bit text.

#include <algorithm>
#include <cstring>
#include <utility>

#include "lingo/lingo_message.h"

namespace ipodctl {
namespace {

constexpr uint32_t kMalformed = 0xFFFFFFFF;
constexpr uint32_t kWideLimit = 0x10000;
constexpr char16_t kNarrowLimit = 0x100;
constexpr uint8_t kReplacement = ' ';

bool isContinuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

/// Returns the number of bytes present of one sequence: the lead byte and the continuation bytes
/// after it.
int presentBytes(const uint8_t* bytes, int length) {
  int count = 1;
  while (count < length && isContinuation(bytes[count]))
    ++count;
  return count;
}

uint32_t textLength(const uint8_t* text) {
  return static_cast<uint32_t>(std::strlen(reinterpret_cast<const char*>(text)));
}

int sequenceLengthAt(const uint8_t* text) { return LingoMessage::utf8SequenceLength(*text); }

/// Fills a string of as many characters as the text has. Returns false when one did not fit.
bool widen(const uint8_t* text, WideString& wide) {
  bool allFitted = true;
  for (uint32_t i = 0; *text != 0; ++i) {
    uint32_t codePoint = kMalformed;
    text += LingoMessage::utf8DecodeChar(text, sequenceLengthAt(text), codePoint);
    const bool fits = codePoint < kWideLimit;
    wide[i] = fits ? static_cast<char16_t>(codePoint) : char16_t{kReplacement};
    allFitted = allFitted && fits;
  }
  return allFitted;
}

/// Fills a string of the same length. Returns false when a character did not fit.
bool narrow(const WideString& wide, ByteString& text) {
  bool allFitted = true;
  for (uint32_t i = 0; i < wide.size(); ++i) {
    const bool fits = wide[i] < kNarrowLimit;
    text[i] = fits ? static_cast<uint8_t>(wide[i]) : kReplacement;
    allFitted = allFitted && fits;
  }
  return allFitted;
}

enum class Conversion { kWhole, kNotWhole, kNoMemory };

/// Converts at most `length` bytes of UTF-8, up to the first NUL, to 8-bit characters. `out` stays
/// as it was when a character is malformed or beyond 16 bits, and without memory.
Conversion convert(const uint8_t* text, uint32_t length, ByteString& out) {
  ByteString narrowed;  // no character has fewer bytes in UTF-8
  if (!narrowed.resize(length)) return Conversion::kNoMemory;
  const uint8_t* end = text + length;
  uint32_t count = 0;
  bool allFitted = true;
  while (text < end && *text != 0) {
    uint32_t codePoint = *text;
    const int size = sequenceLengthAt(text);
    if (size > end - text) return Conversion::kNotWhole;
    text += codePoint < 0x80 ? 1 : LingoMessage::utf8DecodeChar(text, size, codePoint);
    if (codePoint >= kWideLimit) return Conversion::kNotWhole;
    const bool fits = codePoint < kNarrowLimit;
    narrowed[count++] = fits ? static_cast<uint8_t>(codePoint) : kReplacement;
    allFitted = allFitted && fits;
  }
  narrowed.shorten(count);
  out = std::move(narrowed);
  return allFitted ? Conversion::kWhole : Conversion::kNotWhole;
}

}  // namespace

int LingoMessage::utf8SequenceLength(uint8_t lead) {
  if ((lead & 0x80) == 0x00) return 1;
  if ((lead & 0xE0) == 0xC0) return 2;
  if ((lead & 0xF0) == 0xE0) return 3;
  if ((lead & 0xF8) == 0xF0) return 4;
  if ((lead & 0xFC) == 0xF8) return 5;
  if ((lead & 0xFE) == 0xFC) return 6;
  return 1;
}

uint32_t LingoMessage::utf8CharCount(const uint8_t* text) {
  uint32_t count = 0;
  while (*text != 0) {
    text += presentBytes(text, sequenceLengthAt(text));
    ++count;
  }
  return count;
}

int LingoMessage::utf8DecodeChar(const uint8_t* bytes, int length, uint32_t& out) {
  const int present = presentBytes(bytes, length);
  if (present != length) {
    out = kMalformed;
    return present;
  }
  const uint32_t leadMask = length == 1 ? 0x7Fu : 0x7Fu >> length;
  out = bytes[0] & leadMask;
  for (int i = 1; i < length; ++i)
    out = (out << 6) + (bytes[i] & 0x3Fu);
  return present;
}

bool LingoMessage::utf8ToWide(const uint8_t* text, WideString& wide) {
  return wide.resize(utf8CharCount(text)) && widen(text, wide);
}

bool LingoMessage::wideToNarrow(const WideString& wide, ByteString& text) {
  return text.resize(wide.size()) && narrow(wide, text);
}

bool LingoMessage::utf8ToNarrow(const uint8_t* text, uint32_t length, ByteString& out) {
  return text != nullptr && length != 0 &&
         convert(text, textLength(text), out) == Conversion::kWhole;
}

bool LingoMessage::decodeText(uint32_t offset, uint32_t length, ByteString& out) const {
  const uint32_t present = dataLength > offset ? dataLength - offset : 0;
  return convert(data.get() + offset, std::min(length, present), out) != Conversion::kNoMemory;
}

bool LingoMessage::copyText(uint32_t offset, uint32_t length, ByteString& out) const {
  if (!out.resize(length)) return false;
  for (uint32_t i = 0; i < length && offset + i < dataLength; ++i)
    out[i] = data[offset + i];
  return true;
}

}  // namespace ipodctl
