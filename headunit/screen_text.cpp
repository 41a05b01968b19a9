#include "screen_text.h"

namespace {

constexpr unsigned short kPlayAllUnit = 0xFFFF;
constexpr unsigned short kFirstPrintable = 0x20;
constexpr unsigned short kFirstTwoByte = 0x80;
constexpr char kNoLatin[] = "(no Latin letters)";

void appendCharacter(std::string& text, unsigned short character) {
  if (character < kFirstPrintable) return;
  if (character < kFirstTwoByte) {
    text += static_cast<char>(character);
    return;
  }
  text += static_cast<char>(0xC0 | character >> 6);
  text += static_cast<char>(0x80 | (character & 0x3F));
}

}  // namespace

std::string TextBuffer::text() const {
  if (content.front() == kPlayAllUnit) return "[play all]";
  std::string text;
  for (const unsigned short unit : content)
    appendCharacter(text, unit);
  const bool isBlank = text.find_first_not_of(' ') == std::string::npos;
  return isBlank && !text.empty() ? kNoLatin : text;
}

std::string clockTime(int milliseconds) {
  const int seconds = milliseconds / 1000;
  const int rest = seconds % 60;
  return std::to_string(seconds / 60) + (rest < 10 ? ":0" : ":") + std::to_string(rest);
}
