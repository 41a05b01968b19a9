#pragma once

#include <string>

#include "wire/bytes.h"

namespace simulator {

/// Reads big-endian numbers from the start of a payload. Beyond the end it returns 0, and ok()
/// returns false.
class PayloadReader {
 public:
  explicit PayloadReader(ByteView payload) : left(payload) {}

  uint8_t u8() { return static_cast<uint8_t>(number(1)); }
  uint16_t u16() { return static_cast<uint16_t>(number(2)); }
  uint32_t u32() { return number(4); }
  /// Returns everything that was not read yet.
  ByteView rest() const { return left; }
  bool ok() const { return isComplete; }

 private:
  uint32_t number(size_t bytes);

  ByteView left;
  bool isComplete = true;
};

/// Writes big-endian numbers and texts one after the other.
class PayloadWriter {
 public:
  PayloadWriter() {
    constexpr size_t kUsualSize = 32;
    bytes.reserve(kUsualSize);
  }
  PayloadWriter& u8(uint8_t value) { return number(value, 1); }
  PayloadWriter& u16(uint16_t value) { return number(value, 2); }
  PayloadWriter& u32(uint32_t value) { return number(value, 4); }
  /// Appends the text's bytes and the 00 that ends every text of an iPod.
  PayloadWriter& text(const std::string& value);
  Bytes take() { return std::move(bytes); }

 private:
  PayloadWriter& number(uint32_t value, size_t count);

  Bytes bytes;
};

}  // namespace simulator
