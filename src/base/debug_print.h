#pragma once

#include <atomic>
#include <cstdint>

namespace ipodctl {

/// Not 0: the link, the messages and the controller log on the console what they do. Starts at 0.
/// A debugger or a test sets it.
extern std::atomic<uint8_t> debugFlag;

/// Prints as printf does while debugFlag is set, else does nothing.
[[gnu::format(printf, 1, 2)]] void debugPrint(const char* format, ...);

}  // namespace ipodctl
