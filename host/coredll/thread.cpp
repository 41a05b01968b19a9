#include <desk.h>
#include <windows.h>

#include <atomic>
#include <exception>
#include <limits>
#include <thread>
#include <utility>

#include "handle_table.h"
#include "last_error.h"
#include "waitable.h"

namespace coredll {
namespace {

std::atomic<unsigned> runningThreads{0};

/// A wait takes nothing, so that the object stays signalled.
class Thread final : public Waitable {
 public:
  Thread() : Waitable(kThreadKind, 0, 0) {}

  void end() {
    constexpr LONG kEnoughForEveryWait = std::numeric_limits<LONG>::max();
    --runningThreads;
    LONG before = 0;
    add(kEnoughForEveryWait, kEnoughForEveryWait, before);
  }
};

/// Signals a thread's object when the thread ends. It is constructed before the thread function
/// runs, so it is destroyed after every thread_local object of that function.
struct EndSignal {
  std::shared_ptr<Thread> thread;

  ~EndSignal() {
    if (thread) thread->end();
  }
};

thread_local EndSignal endSignal;

/// The system thread is never joined; only the object shows when it has ended.
bool launch(std::shared_ptr<Thread> thread, LPTHREAD_START_ROUTINE start, LPVOID parameter) {
  ++runningThreads;
  try {
    std::thread([thread = std::move(thread), start, parameter]() mutable {
      endSignal.thread = std::move(thread);
      start(parameter);
    }).detach();
    return true;
  } catch (const std::exception&) {
    --runningThreads;
    return false;
  }
}

}  // namespace
}  // namespace coredll

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, DWORD, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD creationFlags, LPDWORD threadId) {
  if (start == nullptr || creationFlags != 0) {
    return coredll::fail<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
  }
  return coredll::newHandle(nullptr, [&] {
    const auto thread = std::make_shared<coredll::Thread>();
    HANDLE handle = coredll::handles().open(thread);
    if (threadId != nullptr) *threadId = static_cast<DWORD>(reinterpret_cast<uintptr_t>(handle));
    if (coredll::launch(thread, start, parameter)) return handle;
    CloseHandle(handle);
    return coredll::fail<HANDLE>(ERROR_NOT_ENOUGH_MEMORY, nullptr);
  });
}

unsigned deskRunningThreads() { return coredll::runningThreads; }
