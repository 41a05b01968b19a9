/*
 * The part of the Windows CE kernel interface that the library uses, with CE's own names, types,
 * values and layouts, for a platform that has no <windows.h> of its own.
 *
 * On the desk these functions come from libcoredll.so; what is promised for each of them is written
 * here, next to its declaration. C and C++ can both read this file.
 */
#ifndef HOST_WINDOWS_H
#define HOST_WINDOWS_H

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
typedef char16_t WCHAR; /* a UTF-16 unit: 16 bits, whatever the desk's wchar_t is */
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
 * The calling thread's last error, 0 in a new thread. Every function below that fails sets it; one
 * that succeeds leaves it alone.
 */
DWORD WINAPI GetLastError(void);
void WINAPI SetLastError(DWORD error);

/* ---------------------------------------------------------------- semaphores and waiting */

#define INFINITE 0xffffffffu
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xffffffffu

/*
 * Handles (semaphores, threads, devices) are opaque. A value names one object from its creation to
 * its CloseHandle and is not given out again while the process lives, so a copy kept too long is
 * recognised. Every function below answers a handle that is NULL, closed, made up or of another
 * kind with its failure result and ERROR_INVALID_HANDLE. All of them may be called on any thread.
 */

/*
 * Makes a semaphore that holds initialCount of at most maximumCount counts. Attributes are ignored.
 * NULL with ERROR_INVALID_PARAMETER when the counts are impossible (maximum below 1, initial below
 * 0 or above the maximum) or a name is given (there are no shared semaphores here), NULL with
 * ERROR_NOT_ENOUGH_MEMORY when there is no room.
 */
HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES attributes, LONG initialCount,
                               LONG maximumCount, LPCWSTR name);

/*
 * Adds releaseCount counts and stores the count before in *previousCount when that is not NULL. A
 * release that would exceed the maximum changes nothing and returns FALSE with
 * ERROR_TOO_MANY_POSTS; so does a releaseCount below 1, with ERROR_INVALID_PARAMETER.
 */
BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG previousCount);

/*
 * Waits at most `milliseconds` (INFINITE: without limit; 0: does not wait) until the object is
 * signalled: a semaphore when it has a count, which the wait takes; a thread when it has ended.
 * WAIT_OBJECT_0; WAIT_TIMEOUT, never before the time is over, whatever happens to the wall clock;
 * or WAIT_FAILED with ERROR_INVALID_HANDLE, also when the object is a device and, for a wait that
 * is already going on, when another thread closes the handle.
 */
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds);

/*
 * Gives a handle back. FALSE with ERROR_INVALID_HANDLE when it is not open (any more). Other
 * threads' calls that are waiting in the object fail at once: waits with WAIT_FAILED, device calls
 * with ERROR_OPERATION_ABORTED. When the close of a device returns, they have left it and it can be
 * opened again.
 */
BOOL WINAPI CloseHandle(HANDLE object);

/* ---------------------------------------------------------------- interlocked access */

/* Stores `value` in *target when that holds `comparand`. Returns what it held. */
LONG WINAPI InterlockedCompareExchange(LONG volatile* target, LONG value, LONG comparand);

/* ---------------------------------------------------------------- threads and time */

typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID parameter);

/*
 * Starts a thread at once; its id, never 0, goes to *threadId when that is not NULL. Attributes and
 * stackSize are ignored: the stack is the default one. creationFlags is 0, else NULL with
 * ERROR_INVALID_PARAMETER, as without a `start`; NULL with ERROR_NOT_ENOUGH_MEMORY when the system
 * has no room for a thread. The handle is signalled when `start` has returned and the destructors
 * of the thread's thread_local objects have run: from then on no code of the caller's runs on it,
 * and the module of `start` may be unloaded. Closing the handle does not end the thread.
 */
HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES attributes, DWORD stackSize,
                           LPTHREAD_START_ROUTINE start, LPVOID parameter, DWORD creationFlags,
                           LPDWORD threadId);

/* Sleeps at least `milliseconds`; 0 gives the rest of the time slice away. */
void WINAPI Sleep(DWORD milliseconds);

/* ---------------------------------------------------------------- devices */

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define OPEN_EXISTING 3u

/*
 * Opens a device by its CE name for reading and writing, unshared. A name that begins with COM is a
 * serial port's ("COM1:"), every other one a stream device's ("IPD1:"); case does not matter.
 *
 * The environment variable IPODCTL_DEVICES says, at each open, which terminal stands for a device:
 *   IPODCTL_DEVICES="IPD1:=/dev/pts/4,COM1:=/dev/ttyUSB0"
 * Blanks around names and paths do not count, nor do entries without '='; of two entries for one
 * name the first holds. The environment must not be changed during the call.
 *
 * The terminal is made raw (8 data bits, no echo, nothing translated) and keeps its speed. What had
 * arrived before the open and was not read is still read. Opening is exclusive by an flock() of the
 * terminal, which every user of this function respects; a terminal that is not a pseudo terminal is
 * also closed to other programs (TIOCEXCL; the superuser gets in all the same).
 *
 * INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND when the name has no entry or its path is not a
 * terminal, ERROR_SHARING_VIOLATION when the terminal is open already, ERROR_ACCESS_DENIED when the
 * user may not open it, ERROR_TOO_MANY_OPEN_FILES or ERROR_NOT_ENOUGH_MEMORY, and
 * ERROR_INVALID_PARAMETER for anything but GENERIC_READ | GENERIC_WRITE, share 0, OPEN_EXISTING,
 * flags 0 and no template. Attributes are ignored.
 */
HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                          DWORD disposition, DWORD flags, HANDLE templateFile);

/*
 * Reads at most `count` bytes and stores how many came in *read (0 on failure). A stream device
 * blocks for at least one byte; a serial port follows its COMMTIMEOUTS, and a time-out is no
 * failure. A count of 0 returns TRUE at once. FALSE with ERROR_OPERATION_ABORTED when the handle is
 * closed meanwhile (what had been collected for the read is lost), with ERROR_GEN_FAILURE when the
 * other side has gone: bytes that can still be read come first, and a read that has some when it
 * happens delivers them. FALSE with ERROR_INVALID_PARAMETER when `read` is NULL, `buffer` is NULL
 * with a count, or `overlapped` is not NULL.
 */
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped);

/*
 * Writes `count` bytes and stores how many went out in *written, also on failure. Blocks while the
 * device takes no more, on a serial port no longer than its COMMTIMEOUTS allow: TRUE then, with
 * fewer bytes. Two threads' writes on one handle follow each other whole. FALSE when the handle is
 * closed meanwhile (ERROR_OPERATION_ABORTED), when the other side has gone (ERROR_GEN_FAILURE), and
 * with ERROR_INVALID_PARAMETER as for ReadFile.
 */
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped);

/*
 * Waits until everything written has left the system's output queue for the device. FALSE when the
 * handle is closed meanwhile (ERROR_OPERATION_ABORTED) or the other side has gone
 * (ERROR_GEN_FAILURE). A pseudo terminal has no such queue: what the other end has not read yet is
 * not waited for.
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
 * Milliseconds; all 0 when a port is opened.
 * A read ends when it has every byte asked for, when ReadIntervalTimeout has passed since the last
 * byte that came (0: no such limit; it does not run before the first byte), or when the total has
 * passed since the call: ReadTotalTimeoutMultiplier for each byte asked for plus
 * ReadTotalTimeoutConstant (both 0: no such limit). With a ReadIntervalTimeout of MAXDWORD a read
 * does not wait for more than there is. Both totals 0: it returns at once, perhaps with nothing.
 * Otherwise it waits for the first byte until the total has passed, and a multiplier of MAXDWORD
 * counts as 0; a constant of MAXDWORD is refused beside that multiplier. A write ends when
 * everything went out or when its total, reckoned likewise, has passed since its turn came.
 */
typedef struct _COMMTIMEOUTS {
  DWORD ReadIntervalTimeout;
  DWORD ReadTotalTimeoutMultiplier;
  DWORD ReadTotalTimeoutConstant;
  DWORD WriteTotalTimeoutMultiplier;
  DWORD WriteTotalTimeoutConstant;
} COMMTIMEOUTS, *LPCOMMTIMEOUTS;

/*
 * Serial ports only: a stream device's handle is ERROR_INVALID_HANDLE. FALSE with
 * ERROR_INVALID_PARAMETER for a NULL pointer, with ERROR_GEN_FAILURE when the other side has gone.
 *
 * GetCommState fills the whole record: the terminal's speed, byte size, parity and stop bits, DTR
 * enabled, and RTS as set last (enabled when the port is opened), whether the terminal has that
 * line or not. SetCommState can change those, DTR excepted: BaudRate (a usual rate, 300 to 921600),
 * ByteSize (5 to 8), Parity (NOPARITY, ODDPARITY, EVENPARITY), StopBits (ONESTOPBIT, TWOSTOPBITS),
 * fRtsControl (RTS_CONTROL_DISABLE, RTS_CONTROL_ENABLE). Every other field must be as GetCommState
 * gave it, and DCBlength is not looked at. A setting that is not among these, or that the terminal
 * does not take (a pseudo terminal has 8 bits and no parity), changes nothing: FALSE with
 * ERROR_INVALID_PARAMETER.
 *
 * New time-outs hold for the reads and writes that begin after the call.
 */
BOOL WINAPI GetCommState(HANDLE port, LPDCB state);
BOOL WINAPI SetCommState(HANDLE port, LPDCB state);
BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);
BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);

/* ---------------------------------------------------------------- windows and modules */

#define WM_USER 0x0400u
#define HWND_BROADCAST HOST_HANDLE(0xffff)

/*
 * Posts a message and returns TRUE at once. There are no windows on the desk: the message goes to
 * the sink of desk.h, on the calling thread, and without a sink it is dropped.
 */
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
#define DLL_THREAD_ATTACH 2u
#define DLL_THREAD_DETACH 3u

/*
 * What a module defines to be called when it comes into the process, with DLL_PROCESS_ATTACH after
 * its static objects are built, and when it leaves, with DLL_PROCESS_DETACH before they are
 * destroyed. `module` is an address inside the module, `reserved` NULL. An attach that returns
 * FALSE ends the process: a shared object cannot refuse to be loaded. Modules get these calls by
 * linking dll_entry.
 */
BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

/*
 * Says that a module wants no calls when threads come and go. TRUE; on the desk there are none in
 * any case.
 */
BOOL WINAPI DisableThreadLibraryCalls(HMODULE module);

#ifdef __cplusplus
}
#endif

#endif
