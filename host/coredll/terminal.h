// Opens the terminal that IPODCTL_DEVICES names for a device.
#pragma once

#include <string>

#include "descriptor.h"

namespace coredll {

/// Opens it raw, exclusive and non-blocking. Returns a closed descriptor, with the last error set,
/// on failure.
Descriptor openTerminal(const std::string& path);

}  // namespace coredll
