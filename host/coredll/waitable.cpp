#include "waitable.h"

#include "handle_table.h"
#include "last_error.h"

namespace coredll {

DWORD Waitable::wait(const Deadline& deadline) {
  std::unique_lock lock(mutex);
  bool isTaken = false;
  const auto isOver = [&] { return closed || (isTaken = take()); };
  if (!deadline) {
    changed.wait(lock, isOver);
  } else if (!changed.wait_until(lock, *deadline, isOver)) {
    return WAIT_TIMEOUT;
  }
  return isTaken ? WAIT_OBJECT_0 : fail(ERROR_INVALID_HANDLE, WAIT_FAILED);
}

void Waitable::close() {
  const std::lock_guard lock(mutex);
  closed = true;
  changed.notify_all();
}

}  // namespace coredll

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  const auto waitable = coredll::objectOf<coredll::Waitable>(object);
  if (!waitable) return WAIT_FAILED;
  if (milliseconds == INFINITE) return waitable->wait(std::nullopt);
  return waitable->wait(coredll::deadlineIn(milliseconds));
}
