#include "control/base64.h"

namespace simulator {

std::string base64(ByteView bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  constexpr size_t kGroup = 3;  // bytes, which are four digits
  std::string text;
  text.reserve((bytes.size() + kGroup - 1) / kGroup * 4);
  for (size_t i = 0; i < bytes.size(); i += kGroup) {
    const size_t here = std::min(kGroup, bytes.size() - i);
    uint32_t bits = 0;
    for (size_t n = 0; n < kGroup; ++n)
      bits = bits << 8 | (n < here ? bytes[i + n] : 0u);
    for (size_t digit = 0; digit < 4; ++digit)
      text += digit <= here ? kDigits[bits >> (18 - 6 * digit) & 0x3F] : '=';
  }
  return text;
}

}  // namespace simulator
