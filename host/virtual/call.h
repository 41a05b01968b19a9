// What every function of the virtual platform is made of.
#ifndef VIRTUAL_CALL_H
#define VIRTUAL_CALL_H

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "virtual_time.h"

namespace virtual_platform {

// printf's text.
__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...);

// The beginning of a call: other threads may run first.
void beginCall();

// The end of a call that lets another thread go on: it may run before the call returns.
void yieldCall();

// The call's line in the trace of the world, if one runs.
void note(const std::string& call);

Time now();

// none: without limit. INFINITE milliseconds are none.
std::optional<Time> deadlineIn(DWORD milliseconds);

// Lets other threads run until `isOver`; false when the deadline came first, and outside of a world
// when it would have to wait.
bool await(const std::string& what, std::optional<Time> deadline, std::function<bool()> isOver,
           std::function<std::optional<Time>()> nextChange = nullptr);

}  // namespace virtual_platform

#endif
