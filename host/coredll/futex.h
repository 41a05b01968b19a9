// The kernel's wait for a change of a number.
#pragma once

#include <windows.h>

#include <atomic>

#include "clock.h"

namespace coredll {

/// Sleeps while `number` is `expected`, until it is woken or the deadline has passed. May return
/// early. Returns false when the deadline has passed.
bool sleepWhile(const std::atomic<LONG>& number, LONG expected, const Deadline& deadline);

/// Wakes at most `count` threads that sleep.
void wake(const std::atomic<LONG>& number, LONG count);

}  // namespace coredll
