/*
 * The part of the Windows CE kernel interface that the library uses, with CE's names, types, values
 * and layouts, for a platform without a <windows.h>.
 *
 * On the Linux host libcoredll.so has these functions. The comment of each declaration says what
 * the function promises. The file is for C and C++.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------- types */

#define WINAPI
#define APIENTRY WINAPI
#define CALLBACK WINAPI

#define TRUE 1
#define FALSE 0

typedef int BOOL;
typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD; /* 32 bits everywhere, as on the device */
typedef int32_t LONG;
typedef uint32_t UINT;
typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef DWORD* LPDWORD;
typedef LONG* LPLONG;

#ifdef __cplusplus
typedef char16_t WCHAR; /* a UTF-16 unit: 16 bits, unlike the Linux host's wchar_t */
#else
typedef uint_least16_t WCHAR; /* as char16_t is in C */
#endif
typedef const WCHAR* LPCWSTR;

typedef void* HANDLE;
typedef HANDLE HWND;
typedef HANDLE HINSTANCE;
typedef HINSTANCE HMODULE;

#ifdef __cplusplus
#define HOST_HANDLE(value) reinterpret_cast<HANDLE>(static_cast<intptr_t>(value))
#else
#define HOST_HANDLE(value) ((HANDLE)(intptr_t)(value))
#endif

#define INVALID_HANDLE_VALUE HOST_HANDLE(-1)
#define MAXDWORD 0xffffffffu

typedef struct _SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;
typedef struct _OVERLAPPED OVERLAPPED, *LPOVERLAPPED;

/* ---------------------------------------------------------------- errors */

#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_TOO_MANY_OPEN_FILES 4u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_GEN_FAILURE 31u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_TOO_MANY_POSTS 298u
#define ERROR_OPERATION_ABORTED 995u

/*
 * Returns the calling thread's last error, 0 in a new thread. Every function below sets it when it
 * fails and does not change it when it succeeds.
 */
DWORD WINAPI GetLastError(void);
void WINAPI SetLastError(DWORD error);

/* ---------------------------------------------------------------- semaphores and waiting */

#define INFINITE 0xffffffffu
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xffffffffu

/*
 * Handles (semaphores, threads, devices) are opaque. A value refers to one object from its creation
 * to its CloseHandle and is not used again in the process, so a stale copy is recognised. With a
 * handle that is NULL, closed, invalid or of another kind every function below returns its failure
 * result and sets ERROR_INVALID_HANDLE. While 65535 handles are open, every function that makes one
 * fails with ERROR_NOT_ENOUGH_MEMORY. All of them may be called on any thread.
 */

/*
 * Creates a semaphore with the count initialCount and the maximum maximumCount. Attributes are
 * ignored. Returns NULL with ERROR_INVALID_PARAMETER when the maximum is below 1, when the initial
 * count is below 0 or above the maximum, or when a name is given (there are no shared semaphores
 * here). Returns NULL with ERROR_NOT_ENOUGH_MEMORY when there is no memory.
 */
HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES attributes, LONG initialCount,
                               LONG maximumCount, LPCWSTR name);

/*
 * Adds releaseCount to the count, and stores the previous count in *previousCount when that is not
 * NULL. A release that would exceed the maximum changes nothing and returns FALSE with
 * ERROR_TOO_MANY_POSTS. A releaseCount below 1 changes nothing and returns FALSE with
 * ERROR_INVALID_PARAMETER.
 */
BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG previousCount);

/*
 * Waits at most `milliseconds` (INFINITE: without limit; 0: does not wait) until the object is
 * signalled. A semaphore is signalled when its count is above 0, and the wait takes 1 from the
 * count. A thread is signalled when it has ended. Returns WAIT_OBJECT_0, or WAIT_TIMEOUT, never
 * before the time is over, even when the wall clock changes. Returns WAIT_FAILED with
 * ERROR_INVALID_HANDLE also when the object is a device, and when another thread closes the handle
 * during the wait.
 */
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds);

/*
 * Closes a handle. Returns FALSE with ERROR_INVALID_HANDLE when it is not open. Other threads'
 * calls that wait in the object fail at once: waits with WAIT_FAILED, device calls with
 * ERROR_OPERATION_ABORTED. When the close of a device returns, these calls have left the device and
 * it can be opened again.
 */
BOOL WINAPI CloseHandle(HANDLE object);

/* ---------------------------------------------------------------- interlocked access */

/* Stores `value` in *target if that equals `comparand`. Returns the previous value. */
LONG WINAPI InterlockedCompareExchange(LONG volatile* target, LONG value, LONG comparand);

/* ---------------------------------------------------------------- threads and time */

typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID parameter);

/*
 * Starts a thread at once. Stores its id, never 0, in *threadId when that is not NULL. Attributes
 * and stackSize are ignored: the stack has the default size. Returns NULL with
 * ERROR_INVALID_PARAMETER when creationFlags is not 0 or `start` is NULL, and NULL with
 * ERROR_NOT_ENOUGH_MEMORY when the system cannot make a thread. The handle is signalled when
 * `start` has returned and the destructors of the thread's thread_local objects have run. From then
 * on the thread runs no code of the caller, and the module of `start` may be unloaded. Closing the
 * handle does not end the thread.
 */
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, DWORD stackSize,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD creationFlags,
                           LPDWORD threadId);

/* Sleeps at least `milliseconds`; 0 yields the rest of the time slice. */
void WINAPI Sleep(DWORD milliseconds);

/* ---------------------------------------------------------------- devices */

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define OPEN_EXISTING 3u

/*
 * Opens a device by its CE name for reading and writing, unshared. A name that begins with COM is
 * that of a serial port ("COM1:"), every other one is that of a stream device ("IPD1:"). Case does
 * not matter.
 *
 * At each open the environment variable IPODCTL_DEVICES maps the names of devices to terminals:
 *   IPODCTL_DEVICES="IPD1:=/dev/pts/4,COM1:=/dev/ttyUSB0" Blanks around names and paths are
 *   ignored, and so are entries without '='. Of two entries for one name the first is used. The
 *   environment must not be changed during the call. When the variable is not set, IPD1: is the
 *   pseudo-terminal that the link /tmp/ipod leads to, if the link and the pseudo-terminal belong to
 *   this user.
 *
 * A stream device can also be mapped to
 *   serial:/dev/ttyUSB0@57600  a serial line with that speed: each frame that is written gets a
 *                              sync byte FF, and each one that is read loses it
 *   tcp:127.0.0.1:5000         a TCP port; connecting takes at most two seconds
 *
 * When a device cannot be opened, standard error says why, once for each cause. With the
 * environment variable IPODCTL_DEBUG=1 each open is a line there.
 *
 * When the environment variable IPODCTL_TRACE names a file, the bytes and events of all devices are
 * recorded there, from the first call of the audio library or the first open on. Of a serial line
 * these are the bytes on the line, with the sync bytes. Each open reads the variable again: another
 * file begins a new trace, no file ends the recording.
 *
 * The terminal is made raw (8 data bits, no echo, nothing translated) and keeps its speed. Bytes
 * that arrived before the open and were not read can still be read. An flock() of the terminal
 * makes the open exclusive among the users of this function. A terminal that is not a
 * pseudo-terminal is also closed to other programs (TIOCEXCL), except to the superuser.
 *
 * Returns INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND when the name has no entry, its path is
 * not a terminal, or there is no connection, ERROR_SHARING_VIOLATION when the terminal is already
 * open, ERROR_ACCESS_DENIED when the user may not open it, ERROR_TOO_MANY_OPEN_FILES or
 * ERROR_NOT_ENOUGH_MEMORY, and ERROR_INVALID_PARAMETER for anything but GENERIC_READ |
 * GENERIC_WRITE, share 0, OPEN_EXISTING, flags 0 and no template. Attributes are ignored.
 */
HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                          DWORD disposition, DWORD flags, HANDLE templateFile);

/*
 * Reads at most `count` bytes and stores their number in *read (0 on failure). A stream device
 * blocks for at least one byte. A serial port follows its COMMTIMEOUTS, and a time-out is not a
 * failure. A count of 0 returns TRUE at once. Returns FALSE with ERROR_OPERATION_ABORTED when the
 * handle is closed meanwhile; bytes already collected for the read are lost. Returns FALSE with
 * ERROR_GEN_FAILURE when the other side has closed, but only after all bytes have been read: a read
 * that already has bytes returns them. Returns FALSE with ERROR_INVALID_PARAMETER when `read` is
 * NULL, `buffer` is NULL with a count, or `overlapped` is not NULL.
 */
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped);

/*
 * Writes `count` bytes and stores the number of written bytes in *written, also on failure. Blocks
 * while the device accepts no more bytes. On a serial port it blocks no longer than its
 * COMMTIMEOUTS allow; then it returns TRUE, with fewer bytes. The bytes of two threads' writes on
 * one handle do not mix. Returns FALSE when the handle is closed meanwhile
 * (ERROR_OPERATION_ABORTED), when the other side has closed (ERROR_GEN_FAILURE), and with
 * ERROR_INVALID_PARAMETER as ReadFile does.
 */
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped);

/*
 * Waits until everything written has left the system's output queue for the device. Returns FALSE
 * when the handle is closed meanwhile (ERROR_OPERATION_ABORTED) or the other side has closed
 * (ERROR_GEN_FAILURE). A pseudo-terminal has no such queue: the call does not wait until the other
 * end has read the bytes, and it fails only after a read or a write has failed.
 */
BOOL WINAPI FlushFileBuffers(HANDLE file);

/* ---------------------------------------------------------------- serial ports */

#define CBR_57600 57600u
#define NOPARITY 0
#define ODDPARITY 1
#define EVENPARITY 2
#define ONESTOPBIT 0
#define TWOSTOPBITS 2
#define DTR_CONTROL_ENABLE 0x01u
#define RTS_CONTROL_DISABLE 0x00u
#define RTS_CONTROL_ENABLE 0x01u

typedef struct _DCB {
  DWORD DCBlength;
  DWORD BaudRate;
  DWORD fBinary : 1;
  DWORD fParity : 1;
  DWORD fOutxCtsFlow : 1;
  DWORD fOutxDsrFlow : 1;
  DWORD fDtrControl : 2;
  DWORD fDsrSensitivity : 1;
  DWORD fTXContinueOnXoff : 1;
  DWORD fOutX : 1;
  DWORD fInX : 1;
  DWORD fErrorChar : 1;
  DWORD fNull : 1;
  DWORD fRtsControl : 2;
  DWORD fAbortOnError : 1;
  DWORD fDummy2 : 17;
  WORD wReserved;
  WORD XonLim;
  WORD XoffLim;
  BYTE ByteSize;
  BYTE Parity;
  BYTE StopBits;
  char XonChar;
  char XoffChar;
  char ErrorChar;
  char EofChar;
  char EvtChar;
  WORD wReserved1;
} DCB, *LPDCB;

/*
 * Milliseconds; all 0 when a port is opened. A read ends when it has every requested byte, when
 * ReadIntervalTimeout has passed since the last byte arrived (0: no such limit; it does not run
 * before the first byte), or when the total has passed since the call: ReadTotalTimeoutMultiplier
 * for each requested byte plus ReadTotalTimeoutConstant (both 0: no such limit). With a
 * ReadIntervalTimeout of MAXDWORD a read returns what has arrived. If both totals are 0, it returns
 * at once, perhaps without bytes. Otherwise it waits for the first byte until the total has passed;
 * a multiplier of MAXDWORD then has the value 0, and is refused with a constant of MAXDWORD. A
 * write ends when everything was written, or when its total, computed in the same way, has passed
 * since it could begin.
 */
typedef struct _COMMTIMEOUTS {
  DWORD ReadIntervalTimeout;
  DWORD ReadTotalTimeoutMultiplier;
  DWORD ReadTotalTimeoutConstant;
  DWORD WriteTotalTimeoutMultiplier;
  DWORD WriteTotalTimeoutConstant;
} COMMTIMEOUTS, *LPCOMMTIMEOUTS;

/*
 * For serial ports only: with a stream device's handle they fail with ERROR_INVALID_HANDLE. They
 * return FALSE with ERROR_INVALID_PARAMETER for a NULL pointer, and with ERROR_GEN_FAILURE when the
 * other side has closed.
 *
 * GetCommState fills the whole record: the terminal's speed, byte size, parity and stop bits, DTR
 * enabled, and RTS as set last (enabled when the port is opened), even if the terminal does not
 * have that line. SetCommState can change these, except DTR: BaudRate (a usual rate, 300 to
 * 921600), ByteSize (5 to 8), Parity (NOPARITY, ODDPARITY, EVENPARITY), StopBits (ONESTOPBIT,
 * TWOSTOPBITS), fRtsControl (RTS_CONTROL_DISABLE, RTS_CONTROL_ENABLE). Every other field must be as
 * GetCommState set it; DCBlength is ignored. A setting that is not among these, or that the
 * terminal does not accept (a pseudo-terminal has 8 bits and no parity), changes nothing: the
 * function returns FALSE with ERROR_INVALID_PARAMETER.
 *
 * New time-outs apply to the reads and writes that begin after the call.
 */
BOOL WINAPI GetCommState(HANDLE port, LPDCB state);
BOOL WINAPI SetCommState(HANDLE port, LPDCB state);
BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);
BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);

/* ---------------------------------------------------------------- windows and modules */

#define WM_USER 0x0400u
#define HWND_BROADCAST HOST_HANDLE(0xffff)

/*
 * Posts a message and returns TRUE at once. The Linux host has no windows: the sink of desk.h
 * receives the message on the calling thread. Without a sink the message is dropped.
 */
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
#define DLL_THREAD_ATTACH 2u
#define DLL_THREAD_DETACH 3u

/*
 * A module defines this function. It is called with DLL_PROCESS_ATTACH when the module is loaded,
 * after its static objects were constructed, and with DLL_PROCESS_DETACH when it is unloaded,
 * before they are destroyed. `module` is an address inside the module, `reserved` NULL. An attach
 * that returns FALSE ends the process, because a shared object cannot refuse to be loaded. A module
 * gets these calls when it links dll_entry.
 */
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

/*
 * Disables the calls of DllMain when threads start and end. Returns TRUE; the Linux host never
 * makes these calls.
 */
BOOL WINAPI DisableThreadLibraryCalls(HMODULE module);

#ifdef __cplusplus
}
#endif
