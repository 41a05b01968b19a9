#include "lingo/lingo_message.h"

#include <cstring>
#include <new>
#include <utility>

#include "base/debug_print.h"
#include "lingo/frame_format.h"

namespace ipodctl {
namespace {

constexpr uint32_t kDumpedBytes = 2;

/// What the capacity of encode must exceed the data by, whatever the form and the command's width.
constexpr uint32_t kCapacityMargin = 4;

std::unique_ptr<uint8_t[]> allocate(uint32_t size) {
  return std::unique_ptr<uint8_t[]>(new (std::nothrow) uint8_t[size]);
}

void copy(uint8_t* dest, const uint8_t* src, uint32_t length) {
  if (length > 0) std::memcpy(dest, src, length);
}

}  // namespace

LingoMessage::~LingoMessage() = default;

uint8_t LingoMessage::getLingo() const { return lingoId; }

uint16_t LingoMessage::getCommand() const { return commandId; }

void LingoMessage::setCommand(uint16_t command) { commandId = command; }

uint16_t LingoMessage::getDataLength() const { return dataLength; }

uint32_t LingoMessage::getData(uint8_t* dest, uint32_t capacity) const {
  if (dataLength > capacity) return 0;
  copy(dest, data.get(), dataLength);
  return dataLength;
}

bool LingoMessage::setData(const uint8_t* src, uint16_t length) {
  if (!data || dataLength < length) {
    std::unique_ptr<uint8_t[]> fresh = allocate(length);
    if (!fresh) return false;
    data = std::move(fresh);
  }
  copy(data.get(), src, length);
  dataLength = length;
  return true;
}

bool LingoMessage::appendData(const uint8_t* src, uint16_t length) {
  if (!data) return setData(src, length);
  const uint32_t joinedLength = uint32_t{dataLength} + length;
  std::unique_ptr<uint8_t[]> joined = allocate(joinedLength);
  if (!joined) return false;
  copy(joined.get(), data.get(), dataLength);
  copy(joined.get() + dataLength, src, length);
  data = std::move(joined);
  dataLength = static_cast<uint16_t>(joinedLength);
  return true;
}

bool LingoMessage::clearData() {
  data.reset();
  dataLength = 0;
  return true;
}

uint16_t LingoMessage::encodeBody(uint8_t* buffer, uint32_t capacity, uint32_t commandSize) const {
  const bool longForm = dataLength >= kLongFormData;
  const uint32_t lengthSize = longForm ? kLongLengthSize : kShortLengthSize;
  const uint32_t length = kLingoSize + commandSize + dataLength;
  const auto bodySize = static_cast<uint16_t>(kStartSize + lengthSize + length);
  if (buffer == nullptr) return bodySize;
  if (capacity < dataLength + kCapacityMargin) return 0;

  uint8_t* cursor = buffer;
  put(cursor, kStartByte);
  if (longForm) {
    put(cursor, kLongFormMarker);
    put(cursor, static_cast<uint8_t>(length >> 8));
  }
  put(cursor, static_cast<uint8_t>(length));
  put(cursor, lingoId);
  if (commandSize == 2) put(cursor, static_cast<uint8_t>(commandId >> 8));
  put(cursor, static_cast<uint8_t>(commandId));
  copy(cursor, data.get(), dataLength);
  if (isDebugging()) {
    debugPrint("OUT-> ");
    dump();
  }
  return bodySize;
}

void LingoMessage::dump() const {
  if (!isDebugging()) return;
  debugPrint("Lingo=%d\tCommand=0x%x ", lingoId, commandId);
  if (data) {
    debugPrint("Data=");
    for (uint32_t i = 0; i < dataLength && i < kDumpedBytes; ++i)
      debugPrint("0x%x ", data[i]);
  }
  debugPrint("\n");
}

bool LingoMessage::putUint32(uint8_t* buffer, uint32_t value) {
  if (buffer == nullptr) return false;
  buffer[0] = static_cast<uint8_t>(value >> 24);
  buffer[1] = static_cast<uint8_t>(value >> 16);
  buffer[2] = static_cast<uint8_t>(value >> 8);
  buffer[3] = static_cast<uint8_t>(value);
  return true;
}

bool LingoMessage::putUint16(uint8_t* buffer, uint16_t value) {
  if (buffer == nullptr) return false;
  buffer[0] = static_cast<uint8_t>(value >> 8);
  buffer[1] = static_cast<uint8_t>(value);
  return true;
}

bool LingoMessage::getUint32(const uint8_t* buffer, uint32_t& out) {
  if (buffer == nullptr) return false;
  out = uint32_t{buffer[0]} << 24 | uint32_t{buffer[1]} << 16 | uint32_t{buffer[2]} << 8 |
        uint32_t{buffer[3]};
  return true;
}

bool LingoMessage::getUint16(const uint8_t* buffer, uint16_t& out) {
  if (buffer == nullptr) return false;
  out = static_cast<uint16_t>(buffer[0] << 8 | buffer[1]);
  return true;
}

void LingoMessage::put(uint8_t*& cursor, uint16_t value) {
  putUint16(cursor, value);
  cursor += sizeof(value);
}

void LingoMessage::put(uint8_t*& cursor, uint32_t value) {
  putUint32(cursor, value);
  cursor += sizeof(value);
}

void LingoMessage::put(uint8_t*& cursor, int32_t value) {
  putUint32(cursor, value);
  cursor += sizeof(value);
}

void LingoMessage::take(const uint8_t*& cursor, uint16_t& value) {
  getUint16(cursor, value);
  cursor += sizeof(value);
}

void LingoMessage::take(const uint8_t*& cursor, uint32_t& value) {
  getUint32(cursor, value);
  cursor += sizeof(value);
}

void LingoMessage::take(const uint8_t*& cursor, int32_t& value) {
  uint32_t word = 0;
  take(cursor, word);
  value = static_cast<int32_t>(word);
}

}  // namespace ipodctl
