#include "support/payload_text.h"

#include <cctype>
#include <stdexcept>

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

unsigned digit(char character) {
  const int upper = std::toupper(static_cast<unsigned char>(character));
  for (unsigned value = 0; value < 16; ++value) {
    if (kDigits[value] == upper) return value;
  }
  throw std::invalid_argument("not a hexadecimal digit");
}

}  // namespace

Bytes bytesOf(const std::string& payload) {
  Bytes bytes;
  for (std::size_t i = 0; i < payload.size(); ++i) {
    if (payload[i] == ' ') continue;
    const unsigned high = digit(payload[i]);
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + digit(payload.at(++i))));
  }
  return bytes;
}

std::string payloadText(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

std::string textBytes(const std::string& text) {
  return ' ' + payloadText(Bytes(text.begin(), text.end())) + " 00";
}
