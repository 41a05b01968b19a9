#pragma once

#include <cstdint>
#include <vector>

namespace bench {

using Bytes = std::vector<uint8_t>;

/// Returns a payload of at most 255 bytes in its frame. It does not use the library's own code,
/// which is measured.
inline Bytes frameOf(const Bytes& payload) {
  Bytes frame(payload.size() + 3);
  frame[0] = 0x55;
  frame[1] = static_cast<uint8_t>(payload.size());
  uint8_t sum = frame[1];
  for (size_t i = 0; i < payload.size(); ++i) {
    frame[i + 2] = payload[i];
    sum = static_cast<uint8_t>(sum + payload[i]);
  }
  frame.back() = static_cast<uint8_t>(-sum);
  return frame;
}

}  // namespace bench
