// The time of a virtual world: it stands still while code runs and jumps when everybody waits.
#ifndef VIRTUAL_TIME_H
#define VIRTUAL_TIME_H

#include <chrono>

namespace virtual_platform {

// Since the world's start, or a span.
using Time = std::chrono::nanoseconds;

}  // namespace virtual_platform

#endif
