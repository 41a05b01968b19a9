#pragma once

#include <array>
#include <string>

/// A cleared buffer of 16-bit units for the library's text functions.
class TextBuffer {
 public:
  static constexpr int kSize = 80;

  unsigned short* units() { return content.data(); }

  /// Returns what was written, as UTF-8: each unit is one Latin-1 character, the play-all mark
  /// becomes "[play all]", and control characters are left out. A text of spaces only, which is how
  /// a name in another script arrives, is described as such.
  std::string text() const;

 private:
  std::array<unsigned short, kSize> content{};
};

/// Returns milliseconds as minutes and seconds: 3:05.
std::string clockTime(int milliseconds);
