// Opens the terminal that IPODCTL_DEVICES names for a device.
#pragma once

#include <string>

#include "descriptor.h"

namespace coredll {

/// Opens it raw, exclusive and non-blocking. Returns a closed descriptor, with the last error set,
/// on failure.
Descriptor openTerminal(const std::string& path);

/// Returns whether the system queues what is written. A pseudo-terminal's other end has it at once.
bool hasOutputQueue(int terminal);

}  // namespace coredll
