#include "support/quick_time.h"

#include <dlfcn.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <utility>

namespace {

constexpr DWORD kReplyTimeOut = 1000;
constexpr DWORD kQuickTimeOut = 100;
constexpr DWORD kLongestSleep = 1;

std::mutex logMutex;
EventLog* sleepLog = nullptr;
std::atomic<const std::function<bool()>*> quickTimeOutsWhen{nullptr};
std::atomic<int> passedTimeOuts{0};
std::atomic<HANDLE> watchedObject{nullptr};
std::atomic<bool> isAwaited{false};

using PlatformWait = DWORD(HANDLE, DWORD);

template <class Function>
Function* platformFunction(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool isQuick() {
  const std::function<bool()>* const condition = quickTimeOutsWhen;
  return condition != nullptr && (!*condition || (*condition)());
}

// In slices, because the condition may become true meanwhile.
DWORD waitForReply(PlatformWait* wait, HANDLE object) {
  for (DWORD waited = 0; waited < kReplyTimeOut; waited += kQuickTimeOut) {
    const DWORD result = wait(object, kQuickTimeOut);
    if (result != WAIT_TIMEOUT) return result;
    if (isQuick()) break;
  }
  ++passedTimeOuts;
  return WAIT_TIMEOUT;
}

bool noteSleep(DWORD milliseconds) {
  const std::lock_guard<std::mutex> lock(logMutex);
  if (sleepLog != nullptr) sleepLog->add("Sleep(" + std::to_string(milliseconds) + ")");
  return sleepLog != nullptr;
}

}  // namespace

extern "C" void WINAPI Sleep(DWORD milliseconds) {
  static const auto platformSleep = platformFunction<void(DWORD)>("Sleep");
  platformSleep(noteSleep(milliseconds) ? std::min(milliseconds, kLongestSleep) : milliseconds);
}

extern "C" DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  static PlatformWait* const wait = platformFunction<PlatformWait>("WaitForSingleObject");
  if (milliseconds == INFINITE && object == watchedObject) isAwaited = true;
  return milliseconds == kReplyTimeOut ? waitForReply(wait, object) : wait(object, milliseconds);
}

QuickSleep::QuickSleep(EventLog& log) {
  const std::lock_guard<std::mutex> lock(logMutex);
  sleepLog = &log;
}

QuickSleep::~QuickSleep() {
  const std::lock_guard<std::mutex> lock(logMutex);
  sleepLog = nullptr;
}

QuickTimeOuts::QuickTimeOuts(std::function<bool()> when) : condition(std::move(when)) {
  passedTimeOuts = 0;
  quickTimeOutsWhen = &condition;
}

QuickTimeOuts::~QuickTimeOuts() { quickTimeOutsWhen = nullptr; }

int QuickTimeOuts::passed() const { return passedTimeOuts; }

EndlessWaits::EndlessWaits(HANDLE object) {
  isAwaited = false;
  watchedObject = object;
}

EndlessWaits::~EndlessWaits() { watchedObject = nullptr; }

bool EndlessWaits::any() const { return isAwaited; }
