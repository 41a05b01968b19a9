#pragma once

#include <string>

#include "wire/bytes.h"

namespace simulator {

/// Returns the bytes in Base64, with padding.
std::string base64(ByteView bytes);

}  // namespace simulator
