// A capture file of the pcapng format.
#pragma once

#include <string>
#include <vector>

#include "iaptrace/conversation.h"

namespace iaptrace {

/// Returns a file with an interface for each device and a packet for each frame, and for bytes
/// outside any frame. The link type is LINKTYPE_USER0. A packet has its direction in its flags
/// (outbound: the host wrote it); its time is since the recording began. What is damaged has a
/// comment. An event of the device is a comment of the packet that follows it, or else of the last
/// one, or of the interface.
std::string captureOf(const trace::Trace& records);

}  // namespace iaptrace
