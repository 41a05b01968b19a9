#pragma once

#include <cstdint>

namespace ipodctl {

class LingoMessage;

/// From now on the message counts among the live ones until it is destroyed. Only in programs that
/// link live_messages.cpp; tests with one thread only.
void followMessage(const LingoMessage* message);

/// The followed messages that have not been destroyed.
uint32_t liveMessages();

}  // namespace ipodctl
