#include "ipodctl/serve/ipod_text.h"

namespace tool {
namespace {

constexpr unsigned short kFirstTwoByte = 0x80;
constexpr unsigned short kAfterLatin = 0x100;
constexpr char kReplacement[] = "\xEF\xBF\xBD";

void appendUnit(std::string& text, unsigned short unit) {
  if (unit == 0 || unit >= kAfterLatin) {
    text += kReplacement;
  } else if (unit < kFirstTwoByte) {
    text += static_cast<char>(unit);
  } else {
    text += static_cast<char>(0xC0 | unit >> 6);
    text += static_cast<char>(0x80 | (unit & 0x3F));
  }
}

bool beginsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }

}  // namespace

std::string IpodText::utf8(size_t start) const {
  size_t end = 0;
  for (size_t i = 0; i < units.size() && units[i] != kUnwritten; ++i) {
    if (units[i] != 0) end = i + 1;
  }
  std::string text;
  for (size_t i = start; i < end; ++i)
    appendUnit(text, units[i]);
  return text;
}

std::string firstCharacters(const std::string& text, size_t count) {
  size_t end = 0;
  for (; end < text.size(); ++end) {
    if (beginsCharacter(text[end]) && count-- == 0) break;
  }
  return text.substr(0, end);
}

}  // namespace tool
