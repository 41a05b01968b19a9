#pragma once

#include <chrono>

namespace simulator {

/// A moment, as the time since the simulation started, or a span of time. The simulated iPod has
/// no clock of its own: whoever runs it says what time it is.
using Time = std::chrono::nanoseconds;

using std::chrono::milliseconds;
using std::chrono::seconds;

}  // namespace simulator
