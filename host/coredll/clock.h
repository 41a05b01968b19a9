// The clock that every wait is measured on: it does not follow changes of the wall clock.
#ifndef COREDLL_CLOCK_H
#define COREDLL_CLOCK_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace coredll {

using Clock = std::chrono::steady_clock;

// How long something may take, in milliseconds; none: without limit.
using TimeLimit = std::optional<std::uint64_t>;

// When it ends; none: never.
using Deadline = std::optional<Clock::time_point>;

// Counts from now. A limit of more than a century is none.
Deadline deadlineIn(TimeLimit limit);

Deadline earlier(const Deadline& first, const Deadline& second);

bool isOver(const Deadline& deadline);

// What is left, as poll() takes it: whole milliseconds, rounded up so that the wait is never short;
// -1 for no deadline.
int pollTimeout(const Deadline& deadline);

}  // namespace coredll

#endif
