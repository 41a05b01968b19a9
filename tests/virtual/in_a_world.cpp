// Runs all tests of a program on a thread of a virtual world, with the time of that world.
#include <gtest/gtest.h>
#include <time.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "virtual/virtual_world.h"

// Replaces the system's function: std::chrono's clocks call it.
extern "C" int clock_gettime(clockid_t, timespec* time) {
  using std::chrono::seconds;
  const auto* const world = virtual_platform::VirtualWorld::current();
  const virtual_platform::Time now = world != nullptr ? world->now() : virtual_platform::Time(0);
  const seconds whole = std::chrono::duration_cast<seconds>(now);
  time->tv_sec = static_cast<time_t>(whole.count());
  time->tv_nsec = static_cast<long>((now - whole).count());
  return 0;
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  constexpr std::uint64_t kSeed = 1;
  virtual_platform::VirtualWorld world(kSeed);
  int result = 1;
  const std::string failure = world.run([&] { result = RUN_ALL_TESTS(); });
  if (failure.empty()) return result;
  std::printf("%s\n", failure.c_str());
  return 1;
}
