#pragma once

#include <string>
#include <vector>

#include "wire/bytes.h"

namespace simulator {

/// Returns the bytes of a text such as "55 02 00 03 FB". Blanks are skipped; any other character
/// that is not a digit fails.
Bytes hex(const std::string& text);
/// Returns bytes as such a text, with blanks.
std::string toHex(ByteView bytes);

/// Returns the hexadecimal text of a payload with a name: bytes, the text and bytes after it, as in
/// withText("00 08", "Pod", "00").
std::string withText(const std::string& before, const std::string& text,
                     const std::string& after = "00");

}  // namespace simulator
