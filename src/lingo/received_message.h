#pragma once

#include <cstdint>
#include <memory>

#include "lingo/lingo_message.h"

namespace ipodctl {

/// Makes the message of a received payload (lingo id, command id, data). Null for a lingo that the
/// library does not speak, for a payload too short for its command id, and without memory.
std::unique_ptr<LingoMessage> makeReceivedMessage(const uint8_t* payload, uint16_t length);

/// Returns a second message with the same lingo, command and data; null without memory.
std::unique_ptr<LingoMessage> copyMessage(const LingoMessage& message);

}  // namespace ipodctl
