#pragma once

#include <cstdint>
#include <string>

#include "lingo/lingo_message.h"
#include "support/bytes.h"

inline Bytes dataOf(const ipodctl::LingoMessage& message) {
  Bytes data(message.getDataLength());
  message.getData(data.data(), static_cast<uint32_t>(data.size()));
  return data;
}

/// Returns what encode() writes into a buffer that is large enough.
inline Bytes bodyOf(const ipodctl::LingoMessage& message) {
  Bytes buffer(message.getDataLength() + 16u, 0xEE);
  buffer.resize(message.encode(buffer.data(), static_cast<uint32_t>(buffer.size())));
  return buffer;
}

/// Sets `message` to what the factory makes of a received command.
inline void receive(ipodctl::LingoMessage& message, uint16_t command, const Bytes& data) {
  message.setCommand(command);
  message.clearData();
  message.appendData(data.data(), static_cast<uint16_t>(data.size()));
}

/// A text as the library takes it.
inline const uint8_t* utf8(const char* text) { return reinterpret_cast<const uint8_t*>(text); }

inline std::string textOf(const ipodctl::ByteString& text) {
  return {text.text(), text.text() + text.size()};
}

inline ipodctl::ByteString byteString(const std::string& text) {
  ipodctl::ByteString result;
  if (!result.assign(utf8(text.data()), static_cast<uint32_t>(text.size()))) return {};
  return result;
}
