// The events that the module under test reports to the program that loads it.
#pragma once

/// Defined by the program.
extern "C" void entryEvent(const char* event);

/// Reports its construction and its destruction.
struct Telltale {
  explicit Telltale(const char* builtEvent, const char* destroyedEvent)
      : destroyed(destroyedEvent) {
    entryEvent(builtEvent);
  }
  Telltale(const Telltale&) = delete;
  Telltale& operator=(const Telltale&) = delete;
  ~Telltale() { entryEvent(destroyed); }

  const char* const destroyed;
};
