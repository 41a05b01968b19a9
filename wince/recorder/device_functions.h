// The functions of coredll that the recorder calls and the library does not, with CE's names, types
// and values. The Linux host has none of them; wince/loader/ replaces them.
#pragma once

#include <windows.h>

extern "C" {

union LARGE_INTEGER {
  int64_t QuadPart;
};

constexpr DWORD OPEN_ALWAYS = 4;
constexpr DWORD FILE_SHARE_READ = 1;
constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
constexpr DWORD FILE_BEGIN = 0;
constexpr DWORD FILE_END = 2;
constexpr UINT CP_UTF8 = 65001;
constexpr int THREAD_PRIORITY_BELOW_NORMAL = 4;

DWORD WINAPI SetFilePointer(HANDLE file, LONG distance, LONG* distanceHigh, DWORD method);
BOOL WINAPI SetEndOfFile(HANDLE file);

DWORD WINAPI GetModuleFileNameW(HMODULE module, WCHAR* path, DWORD size);
HMODULE WINAPI LoadLibraryW(LPCWSTR path);
BOOL WINAPI SetThreadPriority(HANDLE thread, int priority);

BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* count);
BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency);
DWORD WINAPI GetTickCount(void);

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int size, WCHAR* out,
                               int outSize);
void WINAPI OutputDebugStringW(LPCWSTR text);
}
