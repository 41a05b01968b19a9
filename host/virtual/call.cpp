#include "call.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace virtual_platform {

std::string text(const char* format, ...) {
  char line[256];
  va_list values;
  va_start(values, format);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyser does not know va_start
  std::vsnprintf(line, sizeof line, format, values);
  va_end(values);
  return line;
}

void beginCall() {
  VirtualWorld* const world = VirtualWorld::current();
  if (world == nullptr) return;
  world->look();
  world->threads().pass();
}

void yieldCall() {
  if (VirtualWorld* const world = VirtualWorld::current()) world->threads().yield();
}

void note(const std::string& call) {
  if (VirtualWorld* const world = VirtualWorld::current()) world->note(call);
}

Time now() {
  const VirtualWorld* const world = VirtualWorld::current();
  return world ? world->now() : Time(0);
}

std::optional<Time> deadlineIn(DWORD milliseconds) {
  if (milliseconds == INFINITE) return std::nullopt;
  return now() + std::chrono::milliseconds(milliseconds);
}

bool await(std::function<std::string()> what, std::optional<Time> deadline,
           std::function<bool()> isOver, std::function<std::optional<Time>()> nextChange) {
  VirtualWorld* const world = VirtualWorld::current();
  if (world == nullptr) return isOver();
  return world->threads().await(
      {std::move(what), deadline, std::move(isOver), std::move(nextChange)});
}

}  // namespace virtual_platform
