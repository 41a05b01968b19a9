#include "wire/payload.h"

namespace simulator {

uint32_t PayloadReader::number(size_t bytes) {
  if (left.size() < bytes) {
    isComplete = false;
    left = {};
    return 0;
  }
  uint32_t value = 0;
  for (uint8_t byte : left.prefix(bytes))
    value = value << 8 | byte;
  left = left.from(bytes);
  return value;
}

PayloadWriter& PayloadWriter::text(const std::string& value) {
  bytes.insert(bytes.end(), value.begin(), value.end());
  bytes.push_back(0);
  return *this;
}

PayloadWriter& PayloadWriter::number(uint32_t value, size_t count) {
  while (count-- > 0)
    bytes.push_back(static_cast<uint8_t>(value >> (8 * count)));
  return *this;
}

}  // namespace simulator
