#pragma once

#include <array>
#include <string>

namespace tool {

/// A buffer for the library's text functions. They write no terminator, and nothing at all when the
/// text is empty or does not come. So the buffer is filled with a unit that no text has: each unit
/// of a text is a byte, and the play-all mark is 0xFFFF.
class IpodText {
 public:
  /// Longer than any text that arrives.
  static constexpr int kSize = 256;

  IpodText() { units.fill(kUnwritten); }

  unsigned short* buffer() { return units.data(); }
  bool isWritten() const { return units.front() != kUnwritten; }

  /// The text from a unit on, as UTF-8. Zeros at its end are left out, as in a serial number.
  std::string utf8(size_t start = 0) const;

 private:
  static constexpr unsigned short kUnwritten = 0xFFFE;

  std::array<unsigned short, kSize> units;
};

/// The first characters of a text in UTF-8.
std::string firstCharacters(const std::string& text, size_t count);

}  // namespace tool
