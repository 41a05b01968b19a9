#include "stub_platform.h"

#include <isochplay.h>
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

std::vector<uint8_t> delivered;
uint32_t largestRead = 0;
size_t position = 0;
std::function<bool()> readAhead;

HANDLE anyHandle() { return reinterpret_cast<HANDLE>(4); }

}  // namespace

void stub::deliver(std::vector<uint8_t> stream, uint32_t readSize) {
  delivered = std::move(stream);
  largestRead = readSize;
  position = 0;
}

void stub::beforeRead(std::function<bool()> before) { readAhead = std::move(before); }

HANDLE WINAPI CreateSemaphoreW(LPSECURITY_ATTRIBUTES, LONG, LONG, LPCWSTR) { return anyHandle(); }

DWORD WINAPI WaitForSingleObject(HANDLE, DWORD) { return WAIT_OBJECT_0; }

BOOL WINAPI ReleaseSemaphore(HANDLE, LONG, LPLONG) { return TRUE; }

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, DWORD, LPTHREAD_START_ROUTINE, LPVOID, DWORD,
                           LPDWORD) {
  return anyHandle();
}

BOOL WINAPI CloseHandle(HANDLE) { return TRUE; }

DWORD WINAPI GetLastError() { return 0; }

void WINAPI Sleep(DWORD) {}

HANDLE WINAPI CreateFileW(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) {
  return anyHandle();
}

BOOL WINAPI ReadFile(HANDLE, LPVOID buffer, DWORD count, LPDWORD read, LPOVERLAPPED) {
  if (readAhead && !readAhead()) return FALSE;
  uint32_t left = std::min(count, largestRead);
  *read = left;
  auto* to = static_cast<uint8_t*>(buffer);
  while (left > 0) {
    const auto part = static_cast<uint32_t>(std::min<size_t>(left, delivered.size() - position));
    std::memcpy(to, delivered.data() + position, part);
    to += part;
    left -= part;
    position += part;
    if (position == delivered.size()) position = 0;
  }
  return TRUE;
}

BOOL WINAPI WriteFile(HANDLE, LPCVOID, DWORD count, LPDWORD written, LPOVERLAPPED) {
  *written = count;
  return TRUE;
}

BOOL WINAPI FlushFileBuffers(HANDLE) { return TRUE; }

BOOL WINAPI GetCommState(HANDLE, LPDCB) { return TRUE; }

BOOL WINAPI SetCommState(HANDLE, LPDCB) { return TRUE; }

BOOL WINAPI GetCommTimeouts(HANDLE, LPCOMMTIMEOUTS) { return TRUE; }

BOOL WINAPI SetCommTimeouts(HANDLE, LPCOMMTIMEOUTS) { return TRUE; }

BOOL WINAPI PostMessageW(HWND, UINT, WPARAM, LPARAM) { return TRUE; }

BOOL WINAPI DisableThreadLibraryCalls(HMODULE) { return TRUE; }
