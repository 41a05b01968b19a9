#pragma once

#include <string>

#include "wire/bytes.h"

namespace simulator {

/// Takes big-endian numbers from the front of a payload. Past the end it gives 0 and is no longer
/// ok().
class PayloadReader {
 public:
  explicit PayloadReader(ByteView payload) : left(payload) {}

  uint8_t u8() { return static_cast<uint8_t>(number(1)); }
  uint16_t u16() { return static_cast<uint16_t>(number(2)); }
  uint32_t u32() { return number(4); }
  /// Everything that was not taken yet.
  ByteView rest() const { return left; }
  bool ok() const { return complete; }

 private:
  uint32_t number(size_t bytes);

  ByteView left;
  bool complete = true;
};

/// Puts big-endian numbers and texts one behind the other.
class PayloadWriter {
 public:
  PayloadWriter& u8(uint8_t value) { return number(value, 1); }
  PayloadWriter& u16(uint16_t value) { return number(value, 2); }
  PayloadWriter& u32(uint32_t value) { return number(value, 4); }
  /// The text's bytes and the 00 that ends every text of an iPod.
  PayloadWriter& text(const std::string& value);
  Bytes take() { return std::move(bytes); }

 private:
  PayloadWriter& number(uint32_t value, size_t count);

  Bytes bytes;
};

}  // namespace simulator
