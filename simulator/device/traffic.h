#pragma once

#include <string>

#include "simulated_time.h"
#include "wire/message.h"

namespace simulator {

/// Something that happened on the link, as a trace shows it.
struct Traffic {
  enum class Kind {
    kReceived,  ///< from the accessory
    kSent,      ///< by the iPod
    kLost,      ///< meant to be sent, and lost by a fault
    kEvent,     ///< told by the note alone
    kNoise,     ///< from the accessory, but no message; told by the note alone
    kFault,     ///< a fault struck; the note is its text, the message the request if there is one
  };

  Time at{0};
  Kind kind = Kind::kEvent;
  Message message;
  std::string note;  ///< faults that struck the message, or what the event is
};

/// One line for a person: seconds, direction, lingo, command and its name, data, note.
std::string describe(const Traffic& traffic);

}  // namespace simulator
