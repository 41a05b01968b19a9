#pragma once

#include <string>

#include "wire/bytes.h"

namespace simulator {

/// "13 A9 FF", or the first `most` bytes and how many there are: "13 A9 ... (30 bytes)".
std::string hexText(ByteView bytes, size_t most);

}  // namespace simulator
