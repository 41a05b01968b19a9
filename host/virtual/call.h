// The steps of every function of the deterministic platform.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>

#include "virtual_time.h"

namespace virtual_platform {

/// Returns the text that printf would print.
__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...);

/// Begins a call: other threads may run first.
void beginCall();

/// Ends a call that lets another thread continue: that thread may run before the call returns.
void yieldCall();

/// Adds the call to the trace of the world, if one runs.
void note(const std::string& call);

Time now();

/// No value: without limit. INFINITE milliseconds give no value.
std::optional<Time> deadlineIn(DWORD milliseconds);

/// Lets other threads run until `isOver`. Returns false when the deadline passes first, and outside
/// of a world when it would have to wait.
bool await(const std::string& what, std::optional<Time> deadline, std::function<bool()> isOver,
           std::function<std::optional<Time>()> nextChange = nullptr);

}  // namespace virtual_platform
