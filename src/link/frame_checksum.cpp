#include "link/frame_checksum.h"

namespace ipodctl {

uint8_t frameChecksum(const uint8_t* bytes, int count) {
  uint8_t sum = 0;
  for (int i = 0; i < count; ++i)
    sum = static_cast<uint8_t>(sum + bytes[i]);
  return static_cast<uint8_t>(-sum);
}

bool endsWithChecksum(const uint8_t* bytes, int count) {
  return count > 0 && frameChecksum(bytes, count) == 0;
}

}  // namespace ipodctl
