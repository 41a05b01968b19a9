#pragma once

#include <optional>

#include "wire/bytes.h"
#include "wire/lingo.h"

namespace simulator {

/// One command or reply, the content of a frame. The lingo is the received byte, since an accessory
/// can send any.
struct Message {
  uint8_t lingo = 0;
  uint16_t command = 0;
  Bytes data;

  bool is(Lingo wantedLingo, uint16_t wantedCommand) const {
    return lingo == static_cast<uint8_t>(wantedLingo) && command == wantedCommand;
  }
};

inline bool operator==(const Message& a, const Message& b) {
  return a.lingo == b.lingo && a.command == b.command && a.data == b.data;
}

/// Returns the size of a command id in bytes: two in the Extended Interface lingo, one in every
/// other.
size_t commandWidth(uint8_t lingo);

/// Returns the message of a payload, or nothing when the payload is too short for its command id.
std::optional<Message> parseMessage(ByteView payload);

/// Returns the payload of a message.
Bytes messagePayload(const Message& message);

}  // namespace simulator
