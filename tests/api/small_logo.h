#pragma once

#include <string>

#include "support/payload_text.h"

/// The file of a logo of 4 x 1 pixels: red, green, blue, black. Header, information header and one
/// row of pixels, blue first.
inline std::string smallLogo() {
  const Bytes bytes = bytesOf(
      "42 4D 42 00 00 00 00 00 00 00 36 00 00 00"
      "28 00 00 00 04 00 00 00 01 00 00 00 01 00 18 00"
      "00 00 00 00 0C 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      "00 00 FF 00 FF 00 FF 00 00 00 00 00");
  return {bytes.begin(), bytes.end()};
}
