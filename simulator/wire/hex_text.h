#pragma once

#include <string>

#include "wire/bytes.h"

namespace simulator {

/// Returns the bytes as "13 A9 FF", or the first `most` of them and their number: "13 A9 ... (30
/// bytes)".
std::string hexText(ByteView bytes, size_t most);

}  // namespace simulator
