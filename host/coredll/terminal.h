// Opens the terminal that stands for a device.
#ifndef COREDLL_TERMINAL_H
#define COREDLL_TERMINAL_H

#include <string>

#include "descriptor.h"

namespace coredll {

// Raw, exclusive and non-blocking; closed, with the last error set, on failure.
Descriptor openTerminal(const std::string& path);

}  // namespace coredll

#endif
