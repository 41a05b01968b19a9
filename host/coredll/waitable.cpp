#include "waitable.h"

#include <limits>

#include "clock.h"
#include "handle_table.h"

namespace coredll {

void Waitable::close() {
  count = kClosed;
  wakeWaiting(std::numeric_limits<LONG>::max());
}

/// Does the same as take(), but waits while the count is 0. Reads the clock only here: most waits
/// do not sleep.
LONG Waitable::takeWithin(DWORD milliseconds) {
  const Deadline deadline = milliseconds == INFINITE ? Deadline() : deadlineIn(milliseconds);
  // Counted first, and the kernel compares the count later: either it has changed by then, or the
  // thread that changes it sees this one waiting.
  ++waiting;
  LONG before = 0;
  for (bool isInTime = true; before == 0 && isInTime; before = take())
    isInTime = sleepWhile(count, 0, deadline);
  --waiting;
  return before;
}

}  // namespace coredll

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  const auto waitable = coredll::objectOf<coredll::Waitable>(object);
  return waitable ? waitable->wait(milliseconds) : WAIT_FAILED;
}
