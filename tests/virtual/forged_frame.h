#pragma once

#include <vector>

#include "virtual/frame_road.h"
#include "wire/bytes.h"
#include "wire/lingo.h"

/// Messages that an iPod should not send.
namespace virtual_session {

using simulator::Bytes;

/// A parsed frame from the iPod, and others made from it.
class ForgedFrame {
 public:
  explicit ForgedFrame(const Bytes& frame);

  const Bytes& itself() const { return original; }
  const Bytes& payload() const { return whole; }
  bool is(simulator::Lingo lingo, uint16_t command) const;
  /// The size of lingo and command in bytes.
  std::size_t headerSize() const;
  uint8_t lingo() const { return whole.front(); }
  uint16_t command() const;

  /// Returns a frame of another payload, framed as this one, with a correct checksum.
  Bytes with(const Bytes& payload) const;
  Bytes withCommand(uint16_t command) const;
  Bytes withLingo(uint8_t lingo) const;
  Bytes withData(const Bytes& data) const;
  /// Returns this frame with `data` written over its data from `offset` on.
  Bytes withPart(std::size_t offset, const Bytes& part) const;

  /// Returns an acknowledgement in this frame's lingo.
  Bytes acknowledgement(uint8_t status, uint16_t command) const;
  /// Returns the command that this frame answers.
  uint16_t request() const;

 private:
  Bytes original;
  bool hasSync;
  Bytes whole;
};

/// Returns a frame of more than 255 bytes of payload that the library accepts: its check stops
/// before the payload's last byte, so the byte before that has the value of the checksum.
Bytes acceptedLongFrame(const ForgedFrame& original, Bytes payload);

Bytes bigEndian(uint32_t number);

/// Returns the frames without delays.
std::vector<virtual_platform::ComingFrame> atOnce(const std::vector<Bytes>& frames);

}  // namespace virtual_session
