#include "stream_driver.h"

#include <windows.h>

#include <cwchar>

#include "import_table.h"

namespace {

/// A read of the stream driver blocks until there are bytes, and then returns those that have
/// arrived. It ends from time to time without bytes, so that the reader notices a close.
constexpr DWORD kSilenceMilliseconds = 1;
constexpr DWORD kLongestReadMilliseconds = 100;

constexpr DWORD kLongestVariable = 1024;
constexpr wchar_t kVariable[] = L"IPODCTL_DEVICES";

/// Returns the port of "name=port" between the commas of the variable; null when there is none.
const wchar_t* portOf(const wchar_t* name, wchar_t* devices) {
  const size_t length = std::wcslen(name);
  for (wchar_t* entry = devices; entry != nullptr;) {
    wchar_t* const comma = std::wcschr(entry, L',');
    if (comma != nullptr) *comma = L'\0';
    if (std::wcsncmp(entry, name, length) == 0 && entry[length] == L'=') return entry + length + 1;
    entry = comma != nullptr ? comma + 1 : nullptr;
  }
  return nullptr;
}

HANDLE WINAPI openDevice(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE templateFile) {
  wchar_t devices[kLongestVariable] = {};
  GetEnvironmentVariableW(kVariable, devices, kLongestVariable);
  const wchar_t* const port = portOf(name, devices);
  HANDLE device = CreateFileW(port != nullptr ? port : name, access, share, security, disposition,
                              flags, templateFile);
  if (port == nullptr || device == INVALID_HANDLE_VALUE) return device;
  COMMTIMEOUTS timeouts = {};
  timeouts.ReadIntervalTimeout = kSilenceMilliseconds;
  timeouts.ReadTotalTimeoutConstant = kLongestReadMilliseconds;
  if (SetCommTimeouts(device, &timeouts)) return device;
  CloseHandle(device);
  SetLastError(ERROR_FILE_NOT_FOUND);
  return INVALID_HANDLE_VALUE;
}

/// Reads, and fails when the port no longer has settings. A serial port whose other end has closed
/// is only silent, while the driver's device reports it.
BOOL WINAPI readDevice(HANDLE device, LPVOID buffer, DWORD maximum, LPDWORD received,
                       LPOVERLAPPED overlapped) {
  if (!ReadFile(device, buffer, maximum, received, overlapped)) return FALSE;
  if (*received > 0 || GetFileType(device) != FILE_TYPE_CHAR) return TRUE;
  DCB settings = {};
  settings.DCBlength = sizeof settings;
  return GetCommState(device, &settings);
}

}  // namespace

int streamDriverInstall() {
  const HMODULE recorder = GetModuleHandleW(L"ipodtrace.dll");
  const HMODULE library = recorder != nullptr ? recorder : GetModuleHandleW(L"ipodctl.dll");
  if (library == nullptr) return 0;
  const bool opens = replaceImport(library, "CreateFileW", reinterpret_cast<ULONG_PTR>(openDevice));
  const bool reads = replaceImport(library, "ReadFile", reinterpret_cast<ULONG_PTR>(readDevice));
  return opens && reads ? 1 : 0;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  DisableThreadLibraryCalls(module);
  streamDriverInstall();
  return TRUE;
}
