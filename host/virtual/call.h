// The steps of every function of the deterministic platform.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "virtual_time.h"
#include "virtual_world.h"

namespace virtual_platform {

/// Returns the text that printf would print.
__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...);

/// Begins a call: other threads may run first.
void beginCall();

/// Ends a call that lets another thread continue: that thread may run before the call returns.
void yieldCall();

/// Adds the call to the trace of the world, if one runs.
void note(const std::string& call);

/// Does the same with the text that `call` returns, which is made only for a trace that is kept.
template <typename Call, typename = decltype(std::declval<Call>()())>
void note(const Call& call) {
  VirtualWorld* const world = VirtualWorld::current();
  if (world == nullptr) return;
  world->look();
  if (world->keepsTrace()) world->write(call());
}

Time now();

/// No value: without limit. INFINITE milliseconds give no value.
std::optional<Time> deadlineIn(DWORD milliseconds);

/// Lets other threads run until `isOver`. Returns false when the deadline passes first, and outside
/// of a world when it would have to wait.
bool await(std::function<std::string()> what, std::optional<Time> deadline,
           std::function<bool()> isOver, std::function<std::optional<Time>()> nextChange = nullptr);

}  // namespace virtual_platform
