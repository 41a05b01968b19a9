#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "lingo/lingo_message.h"

using Bytes = std::vector<uint8_t>;

inline Bytes dataOf(const LingoMessage& message) {
  Bytes data(message.getDataLength());
  message.getData(data.data(), static_cast<uint32_t>(data.size()));
  return data;
}

/// What encode writes into a buffer with room for everything.
inline Bytes bodyOf(const LingoMessage& message) {
  Bytes buffer(message.getDataLength() + 16u, 0xEE);
  buffer.resize(message.encode(buffer.data(), static_cast<uint32_t>(buffer.size())));
  return buffer;
}

/// Makes `message` what the factory makes of a received command.
inline void receive(LingoMessage& message, uint16_t command, const Bytes& data) {
  message.setCommand(command);
  message.clearData();
  message.appendData(data.data(), static_cast<uint16_t>(data.size()));
}

inline std::string textOf(const ByteString& text) { return {text.text(), text.size()}; }

inline ByteString byteString(const std::string& text) {
  ByteString result;
  if (!result.assign(text.data(), static_cast<uint32_t>(text.size()))) return {};
  return result;
}

/// `count` bytes, each a function of its place, so that a shifted copy differs.
inline Bytes countingBytes(uint32_t count) {
  Bytes bytes(count);
  for (uint32_t i = 0; i < count; ++i)
    bytes[i] = static_cast<uint8_t>(i * 7 + 3);
  return bytes;
}

inline Bytes operator+(const Bytes& left, const Bytes& right) {
  Bytes joined(left.size() + right.size());
  std::copy(right.begin(), right.end(), std::copy(left.begin(), left.end(), joined.begin()));
  return joined;
}
