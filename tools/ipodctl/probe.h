// Looks whether an iPod answers with other frames or at another speed.
#pragma once

#include <string>

namespace tool {

/// Asks at a terminal with both kinds of frames and, on a serial line, at several speeds: at most 8
/// combinations in 40 seconds, until an iPod answers. Prints what it tries and how to map the
/// device. The line's settings are restored, also when a signal ends the program. `end` is written
/// as in IPODCTL_DEVICES.
void probe(const std::string& end);

}  // namespace tool
