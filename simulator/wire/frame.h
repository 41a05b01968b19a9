#pragma once

#include "wire/bytes.h"

namespace simulator {

/// How the two links frame a packet: a USB stream has no sync byte, a serial line has one.
enum class FrameKind { kUsb, kSerial };

constexpr uint8_t kSyncByte = 0xFF;        ///< Before the start byte, on a serial line only.
constexpr uint8_t kStartByte = 0x55;       ///< Where every packet begins.
constexpr uint8_t kLongFormMarker = 0x00;  ///< Instead of a length: a 16-bit length follows.
constexpr size_t kShortFormLimit = 255;    ///< Bytes of payload that one length byte can tell.
constexpr size_t kLongFormLimit = 0xFFFF;

/// kAsNeeded uses the long form only where the short form cannot tell the length.
enum class LengthForm { kAsNeeded, kLong };

/// The byte that makes the sum of length field, payload and checksum a multiple of 256.
uint8_t frameChecksum(ByteView lengthAndPayload);

/// The payload (lingo, command and data) as a frame. A payload above kLongFormLimit is cut there.
Bytes encodeFrame(FrameKind kind, ByteView payload, LengthForm form = LengthForm::kAsNeeded);

}  // namespace simulator
