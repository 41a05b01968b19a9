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
    kLost,      ///< not sent because of a fault
    kEvent,     ///< only the note describes it
    kNoise,     ///< from the accessory, but not a message; only the note describes it
    kFault,  ///< a fault happened; the note is its text, the message is the request if there is one
  };

  Time at{0};
  Kind kind = Kind::kEvent;
  Message message;
  std::string note;  ///< the faults of the message, or a description of the event
};

/// Returns one line for a trace: seconds, direction, lingo, command and its name, fields, note.
std::string describe(const Traffic& traffic);

}  // namespace simulator
