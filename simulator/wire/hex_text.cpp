#include "wire/hex_text.h"

#include <cstdio>

namespace simulator {

std::string hexText(ByteView bytes, size_t most) {
  std::string text;
  char digits[4];
  for (uint8_t byte : bytes.prefix(most)) {
    std::snprintf(digits, sizeof digits, text.empty() ? "%02X" : " %02X", byte);
    text += digits;
  }
  return bytes.size() > most ? text + " ... (" + std::to_string(bytes.size()) + " bytes)" : text;
}

}  // namespace simulator
