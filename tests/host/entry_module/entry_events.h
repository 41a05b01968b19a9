// What the module under test tells the program that loads it.
#pragma once

/// Defined by the program.
extern "C" void entryEvent(const char* event);

/// Tells when it is built and when it is destroyed.
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
