#include "waiting.h"

#include "call.h"
#include "coredll/handle_table.h"

namespace virtual_platform {

DWORD Waitable::wait(DWORD milliseconds) {
  meet();
  const auto call = [&] {
    return "WaitForSingleObject(" + name() + ", " + std::to_string(milliseconds) + ")";
  };
  beginCall();
  const bool isOver =
      await(call, deadlineIn(milliseconds), [this] { return isClosed || isSignalled(); });
  DWORD result = WAIT_TIMEOUT;
  // Without limit and not over: no world runs in which it could end.
  if (isClosed || (!isOver && milliseconds == INFINITE)) {
    result = coredll::fail(ERROR_INVALID_HANDLE, WAIT_FAILED);
  } else if (isOver) {
    take();
    result = WAIT_OBJECT_0;
  }
  note([&] { return call() + " = " + std::to_string(result); });
  return result;
}

}  // namespace virtual_platform

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  const auto waitable = coredll::objectOf<virtual_platform::Waitable>(object);
  return waitable ? waitable->wait(milliseconds) : WAIT_FAILED;
}
