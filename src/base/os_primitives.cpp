#include "base/os_primitives.h"

#include <cstdio>

#include "base/debug_print.h"

namespace ipodctl {

std::atomic<uint8_t> semTraceFlag{0};

namespace {

constexpr int32_t kMicrosecondsPerMillisecond = 1000;
constexpr DWORD kSerialPollMilliseconds = 100;
constexpr DWORD kDefaultStack = 0;

}  // namespace

void traceSemaphore(const char* operation, HANDLE handle, DWORD result) {
  std::printf("%s HANDLE %x ret = %d\n", operation,
              static_cast<unsigned>(reinterpret_cast<uintptr_t>(handle)), static_cast<int>(result));
}

DWORD semMutexCreate(HANDLE& handle) {
  handle = CreateSemaphoreW(nullptr, 1, 1, nullptr);
  return handle != nullptr ? 0 : GetLastError();
}

bool semMutexEnsure(HANDLE& handle) {
  if (handle == nullptr) semMutexCreate(handle);
  return handle != nullptr;
}

int semMutexDelete(HANDLE handle) {
  CloseHandle(handle);
  return 0;
}

DWORD threadCreate(HANDLE& handle, LPTHREAD_START_ROUTINE entry, void* argument) {
  DWORD threadId = 0;
  handle = CreateThread(nullptr, kDefaultStack, entry, argument, 0, &threadId);
  return handle != nullptr ? 0 : GetLastError();
}

int threadJoin(HANDLE handle, uint32_t milliseconds) {
  return waitResult(WaitForSingleObject(handle, milliseconds));
}

int taskSleepMicro(int32_t microseconds) {
  const int32_t milliseconds = microseconds / kMicrosecondsPerMillisecond;
  Sleep(milliseconds > 0 ? static_cast<DWORD>(milliseconds) : 0);
  return 0;
}

int deviceWrite(HANDLE handle, const uint8_t* bytes, uint32_t count) {
  if (handle == INVALID_HANDLE_VALUE) {
    debugPrint("COM non aperta\n");
    return -1;
  }
  if (isDebugging()) {
    debugPrint("\n");
    debugPrint("WRITE!!!\n");
  }
  DWORD written = 0;
  if (!WriteFile(handle, bytes, count, &written, nullptr)) written = 0;
  FlushFileBuffers(handle);
  if (isDebugging()) debugPrint("bytes inviati %d \n", static_cast<int>(written));
  return static_cast<int>(written);
}

int serialRead(HANDLE handle, uint8_t* buffer, uint32_t maximum) {
  for (;;) {
    DWORD received = 0;
    if (!ReadFile(handle, buffer, maximum, &received, nullptr)) return -1;
    if (received > 0) return static_cast<int>(received);
    Sleep(kSerialPollMilliseconds);
  }
}

int usbRead(HANDLE handle, uint8_t* buffer, uint32_t maximum) {
  DWORD received = 0;
  return ReadFile(handle, buffer, maximum, &received, nullptr) ? static_cast<int>(received) : -1;
}

}  // namespace ipodctl
