#pragma once

#include <vector>

#include "virtual/frame_road.h"
#include "wire/bytes.h"
#include "wire/lingo.h"

/// What an iPod should not say.
namespace virtual_session {

using simulator::Bytes;

/// A frame from the iPod, taken apart, and others in its shape.
class ForgedFrame {
 public:
  explicit ForgedFrame(const Bytes& frame);

  const Bytes& itself() const { return original; }
  const Bytes& payload() const { return whole; }
  bool is(simulator::Lingo lingo, uint16_t command) const;
  /// Of lingo and command, in bytes.
  std::size_t headerSize() const;
  uint8_t lingo() const { return whole.front(); }
  uint16_t command() const;

  /// A frame of another payload, framed as this one, with a right checksum.
  Bytes with(const Bytes& payload) const;
  Bytes withCommand(uint16_t command) const;
  Bytes withLingo(uint8_t lingo) const;
  Bytes withData(const Bytes& data) const;
  /// `data` written over the data from `offset` on.
  Bytes withPart(std::size_t offset, const Bytes& part) const;

  /// An acknowledgement in this frame's lingo.
  Bytes acknowledgement(uint8_t status, uint16_t command) const;
  /// The command that this frame answers.
  uint16_t request() const;

 private:
  Bytes original;
  bool hasSync;
  Bytes whole;
};

/// A frame of more than 255 bytes of payload that the library takes for good: its check stops
/// before the payload's last byte, so that the one before has to be what a checksum would be.
Bytes acceptedLongFrame(const ForgedFrame& original, Bytes payload);

Bytes bigEndian(uint32_t number);

/// What a list of frames is without delays.
std::vector<virtual_platform::ComingFrame> atOnce(const std::vector<Bytes>& frames);

}  // namespace virtual_session
