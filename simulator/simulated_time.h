#pragma once

#include <chrono>

namespace simulator {

/// A moment, as the time since the simulation started, or a span of time. The simulated iPod has no
/// clock: its user passes in the time.
using Time = std::chrono::nanoseconds;

using std::chrono::milliseconds;
using std::chrono::seconds;

}  // namespace simulator
