// Texts of the iPod, from UTF-8 to the host's buffers.

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <string>
#include <vector>

#include "api/text_output.h"
#include "lingo/general_message.h"
#include "lingo/received_message.h"
#include "music/text.h"
#include "support/require.h"

using namespace ipodctl;

namespace {

constexpr uint16_t kMostChars = 600;
constexpr char32_t kNarrowLimit = 0x100;
constexpr char32_t kWideLimit = 0x10000;

/// Returns the characters of well-formed UTF-8.
std::vector<char32_t> charactersOf(const std::string& text) {
  std::vector<char32_t> characters;
  for (const char each : text) {
    const auto byte = static_cast<uint8_t>(each);
    if (byte < 0x80) {
      characters.push_back(byte);
    } else if (byte < 0xC0) {
      characters.back() = characters.back() << 6 | (byte & 0x3Fu);
    } else {
      characters.push_back(byte & (byte < 0xE0 ? 0x1Fu : byte < 0xF0 ? 0x0Fu : 0x07u));
    }
  }
  return characters;
}

bool areAllBelow(const std::vector<char32_t>& characters, char32_t limit) {
  return std::all_of(characters.begin(), characters.end(),
                     [limit](char32_t each) { return each < limit; });
}

template <class Unit>
bool isSame(const TextString<Unit>& text, const std::vector<char32_t>& characters, char32_t limit) {
  if (text.size() != characters.size()) return false;
  for (uint32_t i = 0; i < text.size(); ++i) {
    const char32_t expected = characters[i] < limit ? characters[i] : U' ';
    if (text[i] != static_cast<Unit>(expected)) return false;
  }
  return true;
}

/// Returns a copy in separate memory, so that AddressSanitizer sees a read beyond the terminator.
std::unique_ptr<uint8_t[]> terminated(const std::string& text) {
  std::unique_ptr<uint8_t[]> copy(new uint8_t[text.size() + 1]);
  std::copy_n(text.c_str(), text.size() + 1, copy.get());
  return copy;
}

void convert(const std::string& text) {
  const std::unique_ptr<uint8_t[]> input = terminated(text);
  ByteString narrow;
  WideString wide;
  const bool isNarrow = LingoMessage::utf8ToNarrow(input.get(), 1, narrow);
  const bool isWide = LingoMessage::utf8ToWide(input.get(), wide);
  require(wide.size() == LingoMessage::utf8CharCount(input.get()), "a text of another length");
  require(isWide || !isNarrow, "a narrow text of what does not fit in 16 bits");
  ByteString again;
  require(!isNarrow || LingoMessage::wideToNarrow(wide, again), "two ways, two results");
  if (!simulator::isUtf8(text)) return;
  const std::vector<char32_t> characters = charactersOf(text);
  require(isWide == areAllBelow(characters, kWideLimit), "beyond 16 bits");
  require(isNarrow == areAllBelow(characters, kNarrowLimit), "beyond 8 bits");
  require(isSame(wide, characters, kWideLimit), "a wrong wide text");
  require(!isWide || isSame(narrow, characters, kNarrowLimit), "a wrong narrow text");
}

int maxCharsFrom(FuzzedDataProvider& input) {
  constexpr int kOdd[] = {INT_MIN, -1, 0};
  const auto choice = input.ConsumeIntegral<uint16_t>();
  return choice < kMostChars ? choice : kOdd[choice % 3];
}

using Units = std::unique_ptr<unsigned short[]>;

constexpr unsigned short kUnwritten = 0xEEEE;

Units unitsOf(int maxChars) {
  const auto size = static_cast<size_t>(std::max(maxChars, 0));
  Units units(new unsigned short[size]);
  std::fill_n(units.get(), size, kUnwritten);
  return units;
}

/// Returns whether a buffer has the text's units from `start` on and is otherwise unchanged.
bool holds(const Units& units, int maxChars, const ByteString& text, size_t start) {
  for (size_t i = 0; maxChars > 0 && i < static_cast<size_t>(maxChars); ++i) {
    const size_t place = start + i;
    const unsigned short expected =
        place < text.size() ? text[static_cast<uint32_t>(place)] : kUnwritten;
    if (units[i] != expected) return false;
  }
  return true;
}

void writeOut(const ByteString& text, int maxChars, bool hasFirst, bool hasSecond) {
  const Units first = unitsOf(maxChars);
  const Units second = unitsOf(maxChars);
  writeText(text, {hasFirst ? first.get() : nullptr, hasSecond ? second.get() : nullptr, maxChars});
  const ByteString nothing;
  const auto firstUnits = static_cast<size_t>(std::max(maxChars, 0));
  require(holds(first, maxChars, hasFirst ? text : nothing, 0), "a wrong first buffer");
  require(holds(second, maxChars, hasSecond ? text : nothing, firstUnits), "a wrong second buffer");
  writePlayAllMark(
      {hasFirst ? first.get() : nullptr, hasSecond ? second.get() : nullptr, maxChars});
}

/// Returns a name as it is received: in a message, with or without a terminator or a NUL in it.
ByteString receivedName(const std::string& text) {
  std::vector<uint8_t> payload{0x00, 0x08};
  payload.insert(payload.end(), text.begin(), text.end());
  const auto message = makeReceivedMessage(payload.data(), static_cast<uint16_t>(payload.size()));
  ByteString name;
  require(message != nullptr, "no message");
  static_cast<const GeneralMessage&>(*message).decodeReturnIpodName(name);
  return name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, std::min(size, size_t{60000}));
  const int maxChars = maxCharsFrom(input);
  const auto buffers = input.ConsumeIntegral<uint8_t>();
  const std::string text = input.ConsumeRemainingBytesAsString();
  convert(text.substr(0, text.find('\0')));
  writeOut(receivedName(text), maxChars, (buffers & 1) == 0, (buffers & 2) == 0);
  return 0;
}
