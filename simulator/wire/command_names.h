#pragma once

#include "wire/message.h"

namespace simulator {

constexpr char kUnknownCommand[] = "unknown";

/// Returns the protocol's name of a message's command; kUnknownCommand when it is not in the list.
const char* commandName(const Message& message);

}  // namespace simulator
