// A program that is linked to the module. It prints the events in their order.
#include <cstdio>

#include "entry_events.h"

extern "C" void entryEvent(const char* event) { std::printf("%s; ", event); }

extern "C" void useLateStatic();

int main() {
  useLateStatic();
  std::printf("main; ");
  return 0;
}
