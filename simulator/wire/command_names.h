#pragma once

#include "wire/message.h"

namespace simulator {

/// The protocol's name of a message's command; "unknown" when it has none here.
const char* commandName(const Message& message);

}  // namespace simulator
