#pragma once

#include <cstdint>
#include <functional>
#include <vector>

/// The platform's calls at next to no cost, so that a count shows the library's own instructions.
/// A semaphore is always free, a thread never runs, and a device delivers a repeated stream.
namespace stub {

/// From now on a read delivers the bytes of `stream`, over and over, at most `readSize` at a time.
void deliver(std::vector<uint8_t> stream, uint32_t readSize);

/// Calls `before` at the start of each read. A read fails when it returns false.
void beforeRead(std::function<bool()> before);

}  // namespace stub
