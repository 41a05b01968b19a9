#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace ipodctl {

/// The few things that the link needs of the operating system. The semaphores are binary: they
/// serve as locks and as signals, and any thread may give one that another has taken.

/// Not 0: every take and give of a semaphore is told on the console. Starts at 0; set it from a
/// debugger or a test.
extern std::atomic<uint8_t> semTraceFlag;

/// Creates a semaphore that is free (count 1 of 1). Returns 0, or the system's error code, which
/// can be 0, too: judge success by the handle, which is null on failure.
DWORD semMutexCreate(HANDLE& handle);

/// Creates the semaphore if `handle` is null. Returns false when the system has none left.
bool semMutexEnsure(HANDLE& handle);

/// Always 0.
int semMutexDelete(HANDLE handle);

/// Takes the semaphore, waiting at most nanoseconds + seconds in whole milliseconds; none of them
/// means without limit. 0 when taken, -1 after the time, else the system's wait result.
int semMutexTake(HANDLE handle, uint32_t nanoseconds, uint32_t seconds);

/// Takes the semaphore if it is free. 0 when taken, -1 when it is not free, else the system's wait
/// result.
int semMutexTryLock(HANDLE handle);

/// Gives the semaphore. 0, or -1 when it was free already (it stays free) or is none.
int semMutexGive(HANDLE handle);

/// Starts a thread with the default stack. Returns 0, or the system's error code; judge success by
/// the handle, null on failure.
DWORD threadCreate(HANDLE& handle, LPTHREAD_START_ROUTINE entry, void* argument);

/// Waits at most `milliseconds` for a thread's end. 0 when it has ended, -1 after the time, else
/// the system's wait result.
int threadJoin(HANDLE handle, uint32_t milliseconds);

/// Sleeps whole milliseconds: what is less than one is cut off. Always 0.
int taskSleepMicro(int32_t microseconds);

/// Writes to a device and flushes it. Returns the number of bytes written, 0 when the write failed,
/// or -1 when the handle is INVALID_HANDLE_VALUE.
int deviceWrite(HANDLE handle, const uint8_t* bytes, uint32_t count);

/// Reads from a serial port whose reads return at once: looks for data every 100 ms until some
/// arrive. The number of bytes, at least 1, or -1 when the port fails.
int serialRead(HANDLE handle, uint8_t* buffer, uint32_t maximum);

/// Reads once from a stream device; how long that blocks is its driver's business. The number of
/// bytes, 0 included, or -1 when the device fails.
int usbRead(HANDLE handle, uint8_t* buffer, uint32_t maximum);

}  // namespace ipodctl
