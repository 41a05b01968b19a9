// The clock for every wait. It does not follow changes of the wall clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace coredll {

using Clock = std::chrono::steady_clock;

/// How long something may take, in milliseconds; no value: without limit.
using TimeLimit = std::optional<std::uint64_t>;

/// When it ends; no value: never.
using Deadline = std::optional<Clock::time_point>;

/// Returns the deadline that many milliseconds from now, and no value for a limit of more than a
/// century.
Deadline deadlineIn(TimeLimit limit);

Deadline earlier(const Deadline& first, const Deadline& second);

bool isOver(const Deadline& deadline);

/// Returns the rest of the time for poll(): whole milliseconds, rounded up so that the wait is
/// never too short; -1 for no deadline.
int pollTimeout(const Deadline& deadline);

}  // namespace coredll
