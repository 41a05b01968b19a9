#pragma once

#include "wire/bytes.h"

namespace simulator {

/// The frames of the two links: a USB stream has no sync byte, a serial line has one.
enum class FrameKind { kUsb, kSerial };

constexpr uint8_t kSyncByte = 0xFF;        ///< Before the start byte, on a serial line only.
constexpr uint8_t kStartByte = 0x55;       ///< Where every packet begins.
constexpr uint8_t kLongFormMarker = 0x00;  ///< Instead of a length: a 16-bit length follows.
constexpr size_t kShortFormLimit = 255;  ///< The largest payload size that fits in one length byte.
constexpr size_t kLongFormLimit = 0xFFFF;

/// kAsNeeded uses the long form only if the length does not fit in the short form.
enum class LengthForm { kAsNeeded, kLong };

/// Returns the byte that makes the sum of length field, payload and checksum a multiple of 256.
uint8_t frameChecksum(ByteView lengthAndPayload);

/// Returns the payload (lingo, command and data) as a frame. A payload above kLongFormLimit is cut
/// there.
Bytes encodeFrame(FrameKind kind, ByteView payload, LengthForm form = LengthForm::kAsNeeded);

}  // namespace simulator
