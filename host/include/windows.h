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
typedef uint_least16_t WCHAR;
#endif
typedef const WCHAR* LPCWSTR;

typedef void* HANDLE;
typedef HANDLE HWND;
typedef HANDLE HINSTANCE;
typedef HINSTANCE HMODULE;

#define INVALID_HANDLE_VALUE ((HANDLE)(intptr_t)-1)
#define MAXDWORD 0xffffffffu

typedef struct _SECURITY_ATTRIBUTES SECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;
typedef struct _OVERLAPPED OVERLAPPED, *LPOVERLAPPED;

/* ---------------------------------------------------------------- errors */

#define ERROR_SUCCESS 0u
#define ERROR_FILE_NOT_FOUND 2u
#define ERROR_ACCESS_DENIED 5u
#define ERROR_INVALID_HANDLE 6u
#define ERROR_NOT_ENOUGH_MEMORY 8u
#define ERROR_GEN_FAILURE 31u
#define ERROR_SHARING_VIOLATION 32u
#define ERROR_INVALID_PARAMETER 87u
#define ERROR_TOO_MANY_POSTS 298u
#define ERROR_OPERATION_ABORTED 995u

/* The calling thread's last error. Every function below that fails sets it. */
DWORD WINAPI GetLastError(void);
void WINAPI SetLastError(DWORD error);

/* ---------------------------------------------------------------- semaphores and waiting */

#define INFINITE 0xffffffffu
#define WAIT_OBJECT_0 0u
#define WAIT_TIMEOUT 258u
#define WAIT_FAILED 0xffffffffu

/*
 * Makes a semaphore that holds initialCount of at most maximumCount counts. Attributes and name are
 * NULL. NULL with ERROR_INVALID_PARAMETER when the counts are impossible (maximum below 1, initial
 * below 0 or above the maximum), NULL with ERROR_NOT_ENOUGH_MEMORY when there is no room.
 */
HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES attributes, LONG initialCount,
                               LONG maximumCount, LPCWSTR name);

/*
 * Adds releaseCount (at least 1) counts and stores the count before in *previousCount when that is
 * not NULL. A release that would exceed the maximum changes nothing and returns FALSE with
 * ERROR_TOO_MANY_POSTS.
 */
BOOL WINAPI ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LPLONG previousCount);

/*
 * Waits at most `milliseconds` (INFINITE: without limit; 0: does not wait) until the object is
 * signalled: a semaphore when it has a count, which the wait takes; a thread when it has ended.
 * WAIT_OBJECT_0, WAIT_TIMEOUT, or WAIT_FAILED with ERROR_INVALID_HANDLE.
 */
DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds);

/* Gives a handle back. FALSE with ERROR_INVALID_HANDLE when it is not open (any more). */
BOOL WINAPI CloseHandle(HANDLE object);

/* ---------------------------------------------------------------- threads and time */

typedef DWORD(WINAPI* LPTHREAD_START_ROUTINE)(LPVOID parameter);

/*
 * Starts a thread with the default stack at once; its id goes to *threadId when that is not NULL.
 * The handle is signalled when the thread has ended, and closing it does not end the thread.
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
 * Opens a device by its CE name ("IPD1:", "COM1:") for reading and writing, unshared.
 * INVALID_HANDLE_VALUE with ERROR_FILE_NOT_FOUND when there is no such device, with
 * ERROR_SHARING_VIOLATION when it is open already.
 */
HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes,
                          DWORD disposition, DWORD flags, HANDLE templateFile);

/*
 * Reads at most `count` bytes and stores how many came in *read (0 on failure). A stream device
 * blocks for at least one byte; a serial port follows its COMMTIMEOUTS. FALSE when the handle is
 * closed meanwhile (ERROR_OPERATION_ABORTED) or the other side has gone (ERROR_GEN_FAILURE).
 */
BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped);

/*
 * Writes `count` bytes and stores how many went out in *written. Blocks while the device takes no
 * more. FALSE when the handle is closed meanwhile or the other side has gone.
 */
BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped);

/* Waits until everything written has left for the device. */
BOOL WINAPI FlushFileBuffers(HANDLE file);

/* ---------------------------------------------------------------- serial ports */

#define CBR_57600 57600u
#define NOPARITY 0
#define ONESTOPBIT 0
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
 * Milliseconds. Reading with an interval of MAXDWORD and both totals 0 returns at once with what is
 * there, perhaps nothing; all five 0 waits for every byte asked for.
 */
typedef struct _COMMTIMEOUTS {
  DWORD ReadIntervalTimeout;
  DWORD ReadTotalTimeoutMultiplier;
  DWORD ReadTotalTimeoutConstant;
  DWORD WriteTotalTimeoutMultiplier;
  DWORD WriteTotalTimeoutConstant;
} COMMTIMEOUTS, *LPCOMMTIMEOUTS;

BOOL WINAPI GetCommState(HANDLE port, LPDCB state);
BOOL WINAPI SetCommState(HANDLE port, LPDCB state);
BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);
BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts);

/* ---------------------------------------------------------------- windows and modules */

#define WM_USER 0x0400u
#define HWND_BROADCAST ((HWND)(uintptr_t)0xffffu)

/* Posts a message and returns at once. */
BOOL WINAPI PostMessageW(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

#define DLL_PROCESS_DETACH 0u
#define DLL_PROCESS_ATTACH 1u
#define DLL_THREAD_ATTACH 2u
#define DLL_THREAD_DETACH 3u

/* Says that a module wants no calls when threads come and go. */
BOOL WINAPI DisableThreadLibraryCalls(HMODULE module);

#ifdef __cplusplus
}
#endif

#endif
