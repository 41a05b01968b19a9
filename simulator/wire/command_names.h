#pragma once

#include "wire/message.h"

namespace simulator {

constexpr char kUnknownCommand[] = "unknown";

/// The protocol's name of a message's command; kUnknownCommand when it has none here.
const char* commandName(const Message& message);

}  // namespace simulator
