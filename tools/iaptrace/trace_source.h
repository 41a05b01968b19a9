// The trace that a subcommand works on, and the device that it looks at.
#pragma once

#include <string>

#include "iaptrace/conversation.h"

namespace iaptrace {

/// Returns the device to look at: the wanted one, or the only one when none is named. Devices
/// without bytes are ignored when another has some. Throws UsageError when the trace has several,
/// or not the wanted one. A trace without devices has the device "".
std::string deviceOf(const trace::Trace& records, const std::string& wanted,
                     const std::string& path);

/// A device and what happened on it.
struct Session {
  std::string device;
  Conversation items;
};

/// Reads a file, or standard input for "-". Throws trace::ParseError or UsageError.
Session readSession(const std::string& path, const std::string& wantedDevice);

}  // namespace iaptrace
