#include "support/hex.h"

#include <cstdio>
#include <stdexcept>

namespace simulator {

namespace {

int digit(char letter) {
  const std::string digits = "0123456789ABCDEF";
  const size_t place = digits.find(letter);
  if (place == std::string::npos) throw std::invalid_argument("not hexadecimal");
  return static_cast<int>(place);
}

}  // namespace

Bytes hex(const std::string& text) {
  std::string digits;
  for (char letter : text) {
    if (letter != ' ') digits.push_back(letter);
  }
  if (digits.size() % 2 != 0) throw std::invalid_argument("half a byte in " + text);
  Bytes bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    bytes.push_back(static_cast<uint8_t>(digit(digits[i]) * 16 + digit(digits[i + 1])));
  }
  return bytes;
}

std::string toHex(ByteView bytes) {
  std::string text;
  for (uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X ", byte);
    text += digits;
  }
  if (!text.empty()) text.pop_back();
  return text;
}

std::string withText(const std::string& before, const std::string& text, const std::string& after) {
  std::string all = before;
  const Bytes bytes(text.begin(), text.end());
  if (!bytes.empty()) all += " " + toHex(bytes);
  if (!after.empty()) all += " " + after;
  return all;
}

}  // namespace simulator
