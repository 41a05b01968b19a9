#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

using Bytes = std::vector<uint8_t>;

inline Bytes operator+(const Bytes& left, const Bytes& right) {
  Bytes joined(left.size() + right.size());
  std::copy(right.begin(), right.end(), std::copy(left.begin(), left.end(), joined.begin()));
  return joined;
}

/// Returns `count` bytes that depend on their place, so that a shifted copy differs.
inline Bytes countingBytes(uint32_t count) {
  Bytes bytes(count);
  for (uint32_t i = 0; i < count; ++i)
    bytes[i] = static_cast<uint8_t>(i * 7 + 3);
  return bytes;
}
