#pragma once

#include <string>

#include "iaptrace/replayed_host.h"

namespace iaptrace {

/// Plays the host to the iPod at a terminal device in real time. Returns false when `interruption`
/// was readable before the end. Throws std::runtime_error with a message for the user when the
/// device cannot be opened.
bool replayAsHost(ReplayedHost& host, const std::string& path, int interruption);

}  // namespace iaptrace
