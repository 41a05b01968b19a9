#pragma once

#include <cstdint>

namespace ipodctl {

/// The bytes around a payload on the wire:
///
///     [FF] 55 length lingo command data... checksum
///
/// The sync byte FF is sent on serial links only. The length is that of lingo, command and data, in
/// one byte, or in 00 and two bytes (high byte first).

constexpr uint8_t kSyncByte = 0xFF;
constexpr uint8_t kStartByte = 0x55;
constexpr uint8_t kLongFormMarker = 0x00;

constexpr uint32_t kStartSize = 1;
constexpr uint32_t kShortLengthSize = 1;
constexpr uint32_t kLongLengthSize = 3;
constexpr uint32_t kLingoSize = 1;
constexpr uint32_t kChecksumSize = 1;
constexpr uint32_t kSyncSize = 1;

/// From this many data bytes on a frame is sent in the long form.
constexpr uint32_t kLongFormData = 0xFD;

/// The capacity for a frame body; it limits the data to 65531 bytes.
constexpr uint32_t kBodyCapacity = 65535;

/// The largest body that fits the capacity rule, which reckons with 4 bytes around the data even
/// where the long form with a two-byte command needs 7.
constexpr uint32_t kLargestBody = kBodyCapacity - 4 + kStartSize + kLongLengthSize + kLingoSize + 2;

/// The largest payload that the length field can express.
constexpr uint32_t kPayloadCapacity = 65535;

}  // namespace ipodctl
