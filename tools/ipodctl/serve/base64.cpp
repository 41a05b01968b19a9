#include "ipodctl/serve/base64.h"

namespace tool {

std::optional<std::string> decodedBase64(std::string_view text) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  if (text.size() % 4 != 0) return std::nullopt;
  for (int i = 0; i < 2 && !text.empty() && text.back() == '='; ++i)
    text.remove_suffix(1);
  std::string bytes;
  unsigned bits = 0;
  int count = 0;
  for (const char one : text) {
    const size_t digit = kDigits.find(one);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes += static_cast<char>(bits >> count & 0xFF);
  }
  return bytes;
}

}  // namespace tool
