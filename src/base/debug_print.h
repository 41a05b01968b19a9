#pragma once

#include <atomic>
#include <cstdint>

namespace ipodctl {

/// Not 0: the link, the messages and the controller log on the console what they do. Starts at 0.
/// A debugger or a test sets it.
extern std::atomic<uint8_t> debugFlag;

/// True while debugFlag is set. Code that every frame passes tests it before it calls debugPrint.
inline bool isDebugging() { return debugFlag.load(std::memory_order_relaxed) != 0; }

/// Prints as printf does while debugFlag is set, else does nothing.
[[gnu::format(printf, 1, 2)]] void debugPrint(const char* format, ...);

}  // namespace ipodctl
