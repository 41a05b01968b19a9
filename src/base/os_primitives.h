#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace ipodctl {

// What the link needs of the operating system. The semaphores are binary. They serve as locks and
// as signals, and any thread may release one that another thread has taken.

/// Not 0: every take and release of a semaphore is logged on the console. Starts at 0. A debugger
/// or a test sets it.
extern std::atomic<uint8_t> semTraceFlag;

/// Creates a semaphore that is free (count 1 of 1). Returns 0, or the system's error code, which
/// can be 0, too. Test the handle instead: it is null on failure.
DWORD semMutexCreate(HANDLE& handle);

/// Creates the semaphore if `handle` is null. Returns false when the system has none left.
bool semMutexEnsure(HANDLE& handle);

/// Closes the semaphore. Always returns 0.
int semMutexDelete(HANDLE handle);

/// Takes the semaphore. Waits at most nanoseconds + seconds, in whole milliseconds. 0 and 0: waits
/// for ever. Returns 0 when it is taken, -1 when the time is over first, else the system's wait
/// result.
inline int semMutexTake(HANDLE handle, uint32_t nanoseconds, uint32_t seconds);

/// Takes the semaphore if it is free. Returns 0 when it is taken, -1 when it is not free, else the
/// system's wait result.
inline int semMutexTryLock(HANDLE handle);

/// Releases the semaphore. Returns 0, or -1 when it was already free or is not a semaphore. A free
/// semaphore stays free.
inline int semMutexGive(HANDLE handle);

/// Starts a thread with the default stack. Returns 0, or the system's error code. Test the handle
/// instead: it is null on failure.
DWORD threadCreate(HANDLE& handle, LPTHREAD_START_ROUTINE entry, void* argument);

/// Waits at most `milliseconds` for the end of a thread. Returns 0 when it has ended, -1 when the
/// time is over first, else the system's wait result.
int threadJoin(HANDLE handle, uint32_t milliseconds);

/// Sleeps whole milliseconds; the rest is cut off. Always returns 0.
int taskSleepMicro(int32_t microseconds);

/// Writes to a device and flushes it. Returns the number of bytes written, 0 when the write failed,
/// or -1 when the handle is INVALID_HANDLE_VALUE.
int deviceWrite(HANDLE handle, const uint8_t* bytes, uint32_t count);

/// Reads from a serial port whose reads return at once. Polls every 100 ms until bytes arrive.
/// Returns the number of bytes, at least 1, or -1 when the port fails.
int serialRead(HANDLE handle, uint8_t* buffer, uint32_t maximum);

/// Reads once from a stream device. The driver decides how long that blocks. Returns the number of
/// bytes, which can be 0, or -1 when the device fails.
int usbRead(HANDLE handle, uint8_t* buffer, uint32_t maximum);

/// Logs an operation on a semaphore.
void traceSemaphore(const char* operation, HANDLE handle, DWORD result);

inline bool isTracingSemaphores() { return semTraceFlag.load(std::memory_order_relaxed) != 0; }

/// What a wait returned, as the functions here return it.
inline int waitResult(DWORD result) {
  return result == WAIT_TIMEOUT ? -1 : static_cast<int>(result);
}

inline int semMutexTake(HANDLE handle, uint32_t nanoseconds, uint32_t seconds) {
  constexpr uint32_t kNanosecondsPerMillisecond = 1000000;
  constexpr uint32_t kMillisecondsPerSecond = 1000;
  const DWORD milliseconds =
      nanoseconds / kNanosecondsPerMillisecond + seconds * kMillisecondsPerSecond;
  const DWORD result = WaitForSingleObject(handle, milliseconds == 0 ? INFINITE : milliseconds);
  if (isTracingSemaphores()) traceSemaphore("semMutexTake", handle, result);
  return waitResult(result);
}

inline int semMutexTryLock(HANDLE handle) {
  const DWORD result = WaitForSingleObject(handle, 0);
  if (isTracingSemaphores()) traceSemaphore("semMutexTryLock", handle, result);
  return waitResult(result);
}

inline int semMutexGive(HANDLE handle) {
  if (isTracingSemaphores()) traceSemaphore("semMutexGive", handle, 0);
  return ReleaseSemaphore(handle, 1, nullptr) ? 0 : -1;
}

}  // namespace ipodctl
