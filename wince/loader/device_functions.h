#pragma once

#include <string>

namespace loader {

/// Returns a function that the device's coredll has and the Linux host's does not need, or null:
/// files, the performance counter, and others that a DLL next to the library calls.
///
/// The environment can make the card with the files slow and small: IPODCTL_CARD_DELAY is the
/// milliseconds of each write, IPODCTL_CARD_SIZE the bytes of each file at most.
void* deviceFunction(const std::string& name);

}  // namespace loader
