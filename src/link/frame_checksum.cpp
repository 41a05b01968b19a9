#include "link/frame_checksum.h"

namespace ipodctl {

uint8_t frameChecksum(const uint8_t* bytes, int count) {
  uint8_t sum = 0;
  for (int i = 0; i < count; ++i)
    sum = static_cast<uint8_t>(sum + bytes[i]);
  return static_cast<uint8_t>(-sum);
}

bool endsWithChecksum(const uint8_t* bytes, int count) {
  if (count < 1) return false;
  return frameChecksum(bytes, count - 1) == bytes[count - 1];
}

}  // namespace ipodctl
