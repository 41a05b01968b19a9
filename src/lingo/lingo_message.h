#pragma once

#include <cstdint>
#include <memory>
#include <type_traits>

#include "base/text_string.h"

namespace ipodctl {

/// The lingoes that the library speaks.
enum LingoId : uint8_t {
  kGeneralLingo = 0x00,
  kSimpleRemoteLingo = 0x02,
  kExtendedInterfaceLingo = 0x04,
  kDigitalAudioLingo = 0x0A,
};

/// The status of an acknowledgement that says: done.
constexpr uint8_t kStatusOk = 0;

/// One iAP command or reply: lingo id, command id and the command's data bytes, which the message
/// owns. The classes of the lingoes add a builder for each command that goes to the iPod, a decoder
/// for each one that comes from it, and the width of their command ids.
///
/// A message belongs to one thread at a time and has no lock. Operations that return bool fail only
/// when there is no memory, unless they say otherwise; setData and appendData then leave the data
/// as they were.
class LingoMessage {
 public:
  LingoMessage(const LingoMessage&) = delete;
  LingoMessage& operator=(const LingoMessage&) = delete;
  virtual ~LingoMessage();

  virtual uint8_t getLingo() const;

  virtual uint16_t getCommand() const;
  virtual void setCommand(uint16_t command);

  /// Copies all data to `dest`. Returns the number of bytes, 0 (and copies nothing) when they are
  /// more than `capacity`.
  virtual uint32_t getData(uint8_t* dest, uint32_t capacity) const;

  /// Replaces the data by `length` bytes of `src`. The array is reused if the last data in
  /// it were at least as long.
  virtual bool setData(const uint8_t* src, uint16_t length);

  /// Writes the frame's body (start byte to last data byte) and returns its size, kept to 16 bits.
  /// 0 when the capacity is below the data length + 4; a long frame and a wide command id write up
  /// to 3 bytes more than that. With a null buffer: the size needed.
  virtual uint16_t encode(uint8_t* buffer, uint32_t capacity) const = 0;

  virtual uint16_t getDataLength() const;

  /// Prints lingo, command and the first two data bytes while the debug flag is set.
  virtual void dump() const;

  /// Adds `length` bytes at the end of the data. Of their number the low 16 bits are kept.
  virtual bool appendData(const uint8_t* src, uint16_t length);

  /// Frees the data. Always true.
  bool clearData();

  /// The data bytes; null when there are none.
  const uint8_t* dataBytes() const { return data.get(); }

  // Big-endian words. All return false, and do nothing, when the buffer is null.
  static bool putUint32(uint8_t* buffer, uint32_t value);
  static bool putUint16(uint8_t* buffer, uint16_t value);
  static bool getUint32(const uint8_t* buffer, uint32_t& out);
  static bool getUint16(const uint8_t* buffer, uint16_t& out);

  /// The number of bytes, 1 to 6, that a lead byte announces; 1 for a byte that is not a lead byte.
  static int utf8SequenceLength(uint8_t lead);

  /// The number of characters of a NUL-terminated text; a cut sequence counts as one.
  static uint32_t utf8CharCount(const uint8_t* text);

  /// Decodes one character of `length` bytes and returns the number of bytes consumed. A sequence
  /// that is cut short gives 0xFFFFFFFF.
  static int utf8DecodeChar(const uint8_t* bytes, int length, uint32_t& out);

  /// Converts a NUL-terminated UTF-8 text to 16-bit characters. A character that does not fit, or
  /// is malformed, becomes a space and makes the result false.
  static bool utf8ToWide(const uint8_t* text, WideString& wide);

  /// Converts 16-bit characters to 8-bit ones. A character above 255 becomes a space and makes the
  /// result false.
  static bool wideToNarrow(const WideString& wide, ByteString& text);

  /// Converts a NUL-terminated UTF-8 text to 8-bit characters (Latin-1). False when a character did
  /// not fit; `out` is then unchanged if one of them is malformed or beyond 16 bits. A length of 0
  /// fails; other lengths are ignored: the text ends at its NUL.
  static bool utf8ToNarrow(const uint8_t* text, uint32_t length, ByteString& out);

 protected:
  explicit LingoMessage(LingoId lingo) : lingoId(lingo) {}

  /// encode for command ids of one or two bytes.
  uint16_t encodeBody(uint8_t* buffer, uint32_t capacity, uint32_t commandSize) const;

  /// Makes this the given command with these fields, each big-endian in the width of its type.
  template <class... Fields>
  bool build(uint16_t command, Fields... fields) {
    setCommand(command);
    if constexpr (sizeof...(fields) == 0) {
      return true;
    } else {
      uint8_t payload[(sizeof(Fields) + ...)];
      uint8_t* cursor = payload;
      (put(cursor, fields), ...);
      return appendData(payload, sizeof(payload));
    }
  }

  /// Reads the fields when this is the given command and its data are exactly as long as they are.
  template <class... Fields>
  bool decodeExactly(uint16_t command, Fields&... fields) const {
    return dataLength == (sizeof(Fields) + ...) && decodeFirst(command, fields...);
  }

  /// Reads the fields from the start of the data when this is the given command and has them all.
  template <class... Fields>
  bool decodeFirst(uint16_t command, Fields&... fields) const {
    if (commandId != command || dataLength < (sizeof(Fields) + ...)) return false;
    const uint8_t* cursor = data.get();
    (take(cursor, fields), ...);
    return true;
  }

  /// Converts at most `length` data bytes from `offset`, up to the first NUL among them. A text
  /// that does not convert whole succeeds: only a lack of memory fails.
  bool decodeText(uint32_t offset, uint32_t length, ByteString& out) const;

  /// Copies `length` data bytes from `offset` as they are; bytes beyond the data are zeros.
  bool copyText(uint32_t offset, uint32_t length, ByteString& out) const;

 private:
  static void put(uint8_t*& cursor, uint8_t value) { *cursor++ = value; }
  static void put(uint8_t*& cursor, uint16_t value);
  static void put(uint8_t*& cursor, uint32_t value);
  static void put(uint8_t*& cursor, int32_t value);
  template <class Enum, class Byte = std::underlying_type_t<Enum>>
  static void put(uint8_t*& cursor, Enum value) {
    put(cursor, static_cast<Byte>(value));
  }
  static void take(const uint8_t*& cursor, uint8_t& value) { value = *cursor++; }
  static void take(const uint8_t*& cursor, uint16_t& value);
  static void take(const uint8_t*& cursor, uint32_t& value);
  static void take(const uint8_t*& cursor, int32_t& value);
  template <class Enum, class Byte = std::underlying_type_t<Enum>>
  static void take(const uint8_t*& cursor, Enum& value) {
    Byte byte{};
    take(cursor, byte);
    value = Enum{byte};
  }

  uint16_t dataLength = 0;
  uint8_t lingoId = 0;
  uint16_t commandId = 0;
  std::unique_ptr<uint8_t[]> data;
};

/// The message as one of a lingo's class, null when it is of another lingo.
template <class Lingo>
const Lingo* messageAs(const LingoMessage& message) {
  return message.getLingo() == Lingo::kLingo ? static_cast<const Lingo*>(&message) : nullptr;
}

}  // namespace ipodctl
