#include <desk.h>
#include <windows.h>

#include "call.h"
#include "coredll/handle_table.h"
#include "failures.h"
#include "virtual_world.h"
#include "waiting.h"

namespace virtual_platform {
namespace {

class Thread final : public Waitable {
 public:
  Thread() : Waitable(coredll::kThreadKind, "thread") {}
  void end() { ended = true; }

 protected:
  bool isSignalled() const override { return ended; }

 private:
  bool ended = false;
};

HANDLE createThread(VirtualWorld& world, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                    LPDWORD threadId) {
  beginCall();
  if (failuresOf("CreateThread").strikesNext()) {
    note("CreateThread() fails");
    return coredll::fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  }
  const auto thread = std::make_shared<Thread>();
  HANDLE handle = coredll::handles().open(thread);
  if (threadId != nullptr) *threadId = static_cast<DWORD>(reinterpret_cast<uintptr_t>(handle));
  thread->meet();
  note([&] { return "CreateThread() = " + thread->name(); });
  const auto body = [thread, start, parameter] {
    start(parameter);
    thread->end();
    note([&] { return thread->name() + " ends"; });
  };
  world.threads().spawn(Owner::kLibrary, body, [thread] { thread->end(); });
  // A thread that its world has abandoned does not run any more.
  world.atEnd([thread] { thread->end(); });
  yieldCall();
  return handle;
}

/// The last error outside of a world; each thread of a world has its own.
DWORD outsideError = ERROR_SUCCESS;

DWORD& lastError() {
  VirtualWorld* const world = VirtualWorld::current();
  return world ? world->threads().lastError() : outsideError;
}

}  // namespace
}  // namespace virtual_platform

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, DWORD, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD creationFlags, LPDWORD threadId) {
  if (start == nullptr || creationFlags != 0) {
    return coredll::fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
  }
  auto* const world = virtual_platform::VirtualWorld::current();
  if (world == nullptr) return coredll::fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  return coredll::newHandle(
      nullptr, [&] { return virtual_platform::createThread(*world, start, parameter, threadId); });
}

void WINAPI Sleep(DWORD milliseconds) {
  const auto call = [=] { return "Sleep(" + std::to_string(milliseconds) + ")"; };
  virtual_platform::beginCall();
  virtual_platform::await(call, virtual_platform::deadlineIn(milliseconds), [] { return false; });
  virtual_platform::note(call);
}

DWORD WINAPI GetLastError() { return virtual_platform::lastError(); }

void WINAPI SetLastError(DWORD error) { virtual_platform::lastError() = error; }

unsigned deskRunningThreads() {
  const auto* const world = virtual_platform::VirtualWorld::current();
  return world ? world->threads().libraryThreads() : 0;
}
