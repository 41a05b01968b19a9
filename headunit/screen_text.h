#pragma once

#include <array>
#include <string>

/// A cleared buffer of 16-bit units for the library's text functions.
class TextBuffer {
 public:
  static constexpr int kSize = 80;

  unsigned short* units() { return content.data(); }

  /// What was written, as UTF-8: each unit is one Latin-1 character, the play-all mark becomes
  /// "[play all]", control characters are left out, and a text of spaces only, as a name in another
  /// script arrives, is called that.
  std::string text() const;

 private:
  std::array<unsigned short, kSize> content{};
};

/// Milliseconds as minutes and seconds: 3:05.
std::string clockTime(int milliseconds);
