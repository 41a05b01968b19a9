#pragma once

#include <string>
#include <vector>

#include "wire/bytes.h"

namespace simulator {

/// The bytes of "55 02 00 03 FB"; blanks are skipped, anything else that is no digit fails.
Bytes hex(const std::string& text);
/// The same way back, with blanks.
std::string toHex(ByteView bytes);

/// What is written between the quotes of a literal, bytes first and text behind, for payloads with
/// a name: text("00 08", "Pod", "00").
std::string withText(const std::string& before, const std::string& text,
                     const std::string& after = "00");

}  // namespace simulator
