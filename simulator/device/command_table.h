#pragma once

#include <cstddef>

#include "wire/message.h"
#include "wire/payload.h"

namespace simulator {

/// A command that a lingo understands: the size of its data, and the function that answers it.
template <typename Handler>
struct CommandRow {
  uint16_t command;
  size_t least;
  size_t most;
  void (Handler::*answer)(PayloadReader&);
};

constexpr size_t kNoLimit = static_cast<size_t>(-1);

enum class Dispatch { kDone, kUnknown, kWrongSize };

/// Answers the message with the row of its command.
template <typename Handler, size_t kRows>
Dispatch dispatch(const CommandRow<Handler> (&rows)[kRows], Handler& handler,
                  const Message& message) {
  for (const CommandRow<Handler>& row : rows) {
    if (row.command != message.command) continue;
    if (message.data.size() < row.least || message.data.size() > row.most) {
      return Dispatch::kWrongSize;
    }
    PayloadReader reader(message.data);
    (handler.*row.answer)(reader);
    return Dispatch::kDone;
  }
  return Dispatch::kUnknown;
}

}  // namespace simulator
