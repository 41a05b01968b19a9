#pragma once

#include <cstdint>

namespace ipodctl {

/// Returns the byte that makes the sum of all bytes 0; 0 for no bytes.
uint8_t frameChecksum(const uint8_t* bytes, int count);

/// Returns true when the last of `count` bytes is the checksum of those before it.
bool endsWithChecksum(const uint8_t* bytes, int count);

}  // namespace ipodctl
