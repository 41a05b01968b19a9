#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/message_bytes.h"

namespace ipodctl {

using ::operator+;

/// What the controller did, in order, each step a line: "flush", "open IPD1:", "start",
/// "send 55 02 00 05", "wait 0 ns 1 s", "sleep 80", "sync", "addHandler 0A 0004", "close", ...
using Calls = std::vector<std::string>;

/// The steps since the test began. Tests with one thread only.
Calls& callLog();

/// "55 02 00 05"
std::string hexText(const uint8_t* bytes, uint32_t count);

/// `calls` one after another, for steps that repeat.
Calls operator+(Calls first, const Calls& second);
Calls repeated(uint32_t times, const Calls& calls);

/// Returns the steps after the first `count` ones; none when there are no more.
Calls behindFirst(uint32_t count, const Calls& calls);

/// The lines that begin with `start`, e.g. "send".
Calls linesOf(const Calls& calls, const std::string& start);

}  // namespace ipodctl
