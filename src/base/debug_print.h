#pragma once

#include <atomic>
#include <cstdint>

namespace ipodctl {

/// Not 0: the link, the messages and the controller tell on the console what they do. Starts at 0;
/// set it from a debugger or a test.
extern std::atomic<uint8_t> debugFlag;

/// printf while debugFlag is set, else nothing.
[[gnu::format(printf, 1, 2)]] void debugPrint(const char* format, ...);

}  // namespace ipodctl
