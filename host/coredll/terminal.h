// Opens the terminal that IPODCTL_DEVICES names for a device.
#pragma once

#include <sys/stat.h>
#include <windows.h>

#include <optional>
#include <string>

#include "descriptor.h"

namespace coredll {

/// Opens it raw, exclusive and non-blocking, with the speed if there is one. Throws OpenFailure.
Descriptor openTerminal(const std::string& path, std::optional<DWORD> speed = std::nullopt);

bool isPseudoTerminal(const struct stat& status);

/// Returns whether the system queues what is written. A pseudo-terminal's other end has it at once.
bool hasOutputQueue(int terminal);

/// Returns speed, byte size, parity and stop bits, for a person.
std::string settingsOf(int wire);

}  // namespace coredll
