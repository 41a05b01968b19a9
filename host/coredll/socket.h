// Connects to an iPod at a TCP port.
#pragma once

#include <string>

#include "descriptor.h"

namespace coredll {

/// Returns a non-blocking connection. Throws OpenFailure, at the latest after two seconds.
Descriptor connectTo(const std::string& host, const std::string& port);

}  // namespace coredll
