#include "futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace coredll {
namespace {

static_assert(sizeof(std::atomic<LONG>) == 4, "the kernel compares 32 bits");
static_assert(sizeof(timespec) == 2 * sizeof(long), "the kernel's form for this call");

timespec toTimespec(Clock::time_point time) {
  const auto sinceStart = time.time_since_epoch();
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(sinceStart);
  timespec result = {};
  result.tv_sec = static_cast<time_t>(seconds.count());
  result.tv_nsec = static_cast<long>(std::chrono::nanoseconds(sinceStart - seconds).count());
  return result;
}

}  // namespace

bool sleepWhile(const std::atomic<LONG>& number, LONG expected, const Deadline& deadline) {
  // This operation has an absolute time of the monotonic clock.
  const timespec end = deadline ? toTimespec(*deadline) : timespec();
  const long result = syscall(SYS_futex, &number, FUTEX_WAIT_BITSET_PRIVATE, expected,
                              deadline ? &end : nullptr, nullptr, FUTEX_BITSET_MATCH_ANY);
  return result == 0 || errno != ETIMEDOUT;
}

void wake(const std::atomic<LONG>& number, LONG count) {
  syscall(SYS_futex, &number, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
}

}  // namespace coredll
