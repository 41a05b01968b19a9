/* The layouts of the records that programs and the device's drivers share, for C and for C++. */
#pragma once

#include <assert.h>
#include <stddef.h>
#include <windows.h>

#include <mmsystem.h>

static_assert(sizeof(BYTE) == 1, "8 bits");
static_assert(sizeof(WORD) == 2, "16 bits");
static_assert(sizeof(WCHAR) == 2, "16 bits");
static_assert(sizeof(DWORD) == 4, "32 bits");
static_assert(sizeof(LONG) == 4, "32 bits");
static_assert(sizeof(UINT) == 4, "32 bits");
static_assert(sizeof(BOOL) == 4, "32 bits");
static_assert(sizeof(HANDLE) == sizeof(void*), "a pointer's size");
static_assert(sizeof(WPARAM) == sizeof(void*), "a pointer's size");
static_assert(sizeof(LPARAM) == sizeof(void*), "a pointer's size");

static_assert(sizeof(DCB) == 28, "size");
static_assert(offsetof(DCB, DCBlength) == 0, "offset");
static_assert(offsetof(DCB, BaudRate) == 4, "offset");
static_assert(offsetof(DCB, wReserved) == 12, "offset: after 32 bits of flags");
static_assert(offsetof(DCB, XonLim) == 14, "offset");
static_assert(offsetof(DCB, XoffLim) == 16, "offset");
static_assert(offsetof(DCB, ByteSize) == 18, "offset");
static_assert(offsetof(DCB, Parity) == 19, "offset");
static_assert(offsetof(DCB, StopBits) == 20, "offset");
static_assert(offsetof(DCB, XonChar) == 21, "offset");
static_assert(offsetof(DCB, XoffChar) == 22, "offset");
static_assert(offsetof(DCB, ErrorChar) == 23, "offset");
static_assert(offsetof(DCB, EofChar) == 24, "offset");
static_assert(offsetof(DCB, EvtChar) == 25, "offset");
static_assert(offsetof(DCB, wReserved1) == 26, "offset");

static_assert(sizeof(COMMTIMEOUTS) == 20, "size");
static_assert(offsetof(COMMTIMEOUTS, ReadIntervalTimeout) == 0, "offset");
static_assert(offsetof(COMMTIMEOUTS, ReadTotalTimeoutMultiplier) == 4, "offset");
static_assert(offsetof(COMMTIMEOUTS, ReadTotalTimeoutConstant) == 8, "offset");
static_assert(offsetof(COMMTIMEOUTS, WriteTotalTimeoutMultiplier) == 12, "offset");
static_assert(offsetof(COMMTIMEOUTS, WriteTotalTimeoutConstant) == 16, "offset");

static_assert(sizeof(WAVEFORMATEX) == 18, "size");
static_assert(offsetof(WAVEFORMATEX, wFormatTag) == 0, "offset");
static_assert(offsetof(WAVEFORMATEX, nChannels) == 2, "offset");
static_assert(offsetof(WAVEFORMATEX, nSamplesPerSec) == 4, "offset");
static_assert(offsetof(WAVEFORMATEX, nAvgBytesPerSec) == 8, "offset");
static_assert(offsetof(WAVEFORMATEX, nBlockAlign) == 12, "offset");
static_assert(offsetof(WAVEFORMATEX, wBitsPerSample) == 14, "offset");
static_assert(offsetof(WAVEFORMATEX, cbSize) == 16, "offset");

static_assert(WAIT_OBJECT_0 == 0 && WAIT_TIMEOUT == 258 && WAIT_FAILED == 0xffffffff, "values");
static_assert(INFINITE == 0xffffffff && MAXDWORD == 0xffffffff, "values");
static_assert(ERROR_FILE_NOT_FOUND == 2 && ERROR_TOO_MANY_OPEN_FILES == 4, "values");
static_assert(ERROR_ACCESS_DENIED == 5 && ERROR_INVALID_HANDLE == 6, "values");
static_assert(ERROR_NOT_ENOUGH_MEMORY == 8 && ERROR_GEN_FAILURE == 31, "values");
static_assert(ERROR_SHARING_VIOLATION == 32 && ERROR_INVALID_PARAMETER == 87, "values");
static_assert(ERROR_TOO_MANY_POSTS == 298 && ERROR_OPERATION_ABORTED == 995, "values");
static_assert(GENERIC_READ == 0x80000000 && GENERIC_WRITE == 0x40000000, "values");
static_assert(OPEN_EXISTING == 3 && CBR_57600 == 57600 && WM_USER == 0x400, "values");
static_assert(DLL_PROCESS_DETACH == 0 && DLL_PROCESS_ATTACH == 1, "values");
