// The calls that `ipodctl doctor` makes.
#pragma once

namespace tool {

/// Connects, asks for the name, the serial number, the artists and what plays, and disconnects.
/// Starts no playback. Takes at most about 20 seconds, whatever the iPod does.
void runShortSession();

}  // namespace tool
