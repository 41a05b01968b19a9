#include "recorder/clock.h"

#include <windows.h>

namespace recorder {
namespace {

constexpr uint64_t kMicrosASecond = 1000000;
constexpr uint64_t kTicksASecond = 1000;

/// Returns the performance counter; the tick count on a device without one.
uint64_t counter() {
  LARGE_INTEGER value = {};
  return QueryPerformanceCounter(&value) ? static_cast<uint64_t>(value.QuadPart) : GetTickCount();
}

}  // namespace

void Clock::start() {
  LARGE_INTEGER value = {};
  const bool hasCounter = QueryPerformanceFrequency(&value) && value.QuadPart > 0;
  frequency = hasCounter ? static_cast<uint64_t>(value.QuadPart) : kTicksASecond;
  beginning = counter();
}

uint64_t Clock::micros() {
  const uint64_t passed = counter() - beginning;
  const uint64_t now =
      passed / frequency * kMicrosASecond + passed % frequency * kMicrosASecond / frequency;
  if (now > last) last = now;
  return last;
}

}  // namespace recorder
