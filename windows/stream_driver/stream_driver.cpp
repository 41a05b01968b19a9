#include "stream_driver.h"

#include <windows.h>

#include <cstdio>
#include <cwchar>

#include "import_table.h"
#include "tcp_device.h"

namespace {

/// A read of the stream driver blocks until there are bytes, and then returns those that have
/// arrived. It ends from time to time without bytes, so that the reader notices a close.
constexpr DWORD kSilenceMilliseconds = 1;
constexpr DWORD kLongestReadMilliseconds = 100;

constexpr DWORD kLongestVariable = 1024;
constexpr wchar_t kVariable[] = L"IPODCTL_DEVICES";
constexpr wchar_t kTcp[] = L"tcp:";
constexpr wchar_t kDevice[] = L"IPD1:";
constexpr wchar_t kUsualPlace[] = L"127.0.0.1:5000";

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

/// Says why a device cannot be opened. The library only reports that there is no iPod.
HANDLE refuse(LPCWSTR name, const wchar_t* why, const wchar_t* place, const wchar_t* advice) {
  std::fwprintf(stderr, L"ipodctl: %ls %ls%ls; %ls\n", name, why, place, advice);
  std::fflush(stderr);
  SetLastError(ERROR_FILE_NOT_FOUND);
  return INVALID_HANDLE_VALUE;
}

HANDLE openTcp(LPCWSTR name, const wchar_t* place) {
  HANDLE device = openTcpDevice(place);
  if (device != INVALID_HANDLE_VALUE) return device;
  return refuse(name, L"nothing answers at ", place,
                L"start ipodsim there, or correct IPODCTL_DEVICES");
}

HANDLE openSerialPort(LPCWSTR name, const wchar_t* port, HANDLE device) {
  COMMTIMEOUTS timeouts = {};
  timeouts.ReadIntervalTimeout = kSilenceMilliseconds;
  timeouts.ReadTotalTimeoutConstant = kLongestReadMilliseconds;
  if (device != INVALID_HANDLE_VALUE && SetCommTimeouts(device, &timeouts)) return device;
  if (device != INVALID_HANDLE_VALUE) CloseHandle(device);
  return refuse(name, L"cannot be opened at ", port,
                L"correct the serial port in IPODCTL_DEVICES, or end the program that uses it");
}

/// Opens what no variable names: a driver of the system, else the place where ipodsim is without
/// options. The recorder opens its files here, too.
HANDLE openUnnamed(LPCWSTR name, bool hasVariable, HANDLE device) {
  if (device != INVALID_HANDLE_VALUE || std::wcscmp(name, kDevice) != 0) return device;
  if (hasVariable) {
    return refuse(name, L"is not a device of this machine, and not in IPODCTL_DEVICES", L"",
                  L"correct the variable");
  }
  HANDLE usual = openTcpDevice(kUsualPlace);
  if (usual != INVALID_HANDLE_VALUE) return usual;
  return refuse(name, L"is not a device of this machine, and nothing answers at ", kUsualPlace,
                L"start ipodsim, or set IPODCTL_DEVICES");
}

HANDLE WINAPI openDevice(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE templateFile) {
  wchar_t devices[kLongestVariable] = {};
  const bool hasVariable = GetEnvironmentVariableW(kVariable, devices, kLongestVariable) > 0;
  const wchar_t* const port = portOf(name, devices);
  if (port != nullptr && std::wcsncmp(port, kTcp, std::wcslen(kTcp)) == 0)
    return openTcp(name, port + std::wcslen(kTcp));
  HANDLE device = CreateFileW(port != nullptr ? port : name, access, share, security, disposition,
                              flags, templateFile);
  return port != nullptr ? openSerialPort(name, port, device)
                         : openUnnamed(name, hasVariable, device);
}

/// Reads, and fails when the port no longer has settings. A serial port whose other end has closed
/// is only silent, while the driver's device reports it.
BOOL WINAPI readDevice(HANDLE device, LPVOID buffer, DWORD maximum, LPDWORD received,
                       LPOVERLAPPED overlapped) {
  if (isTcpDevice(device))
    return readTcpDevice(device, buffer, maximum, received, kLongestReadMilliseconds);
  if (!ReadFile(device, buffer, maximum, received, overlapped)) return FALSE;
  if (*received > 0 || GetFileType(device) != FILE_TYPE_CHAR) return TRUE;
  DCB settings = {};
  settings.DCBlength = sizeof settings;
  return GetCommState(device, &settings);
}

BOOL WINAPI writeDevice(HANDLE device, LPCVOID bytes, DWORD count, LPDWORD written,
                        LPOVERLAPPED overlapped) {
  if (isTcpDevice(device)) return writeTcpDevice(device, bytes, count, written);
  return WriteFile(device, bytes, count, written, overlapped);
}

BOOL WINAPI closeDevice(HANDLE device) {
  return isTcpDevice(device) ? closeTcpDevice(device) : CloseHandle(device);
}

struct Replacement {
  const char* name;
  ULONG_PTR address;
};

const Replacement kReplacements[] = {
    {"CreateFileW", reinterpret_cast<ULONG_PTR>(openDevice)},
    {"ReadFile", reinterpret_cast<ULONG_PTR>(readDevice)},
    {"WriteFile", reinterpret_cast<ULONG_PTR>(writeDevice)},
    {"CloseHandle", reinterpret_cast<ULONG_PTR>(closeDevice)},
};

}  // namespace

int streamDriverInstall() {
  const HMODULE recorder = GetModuleHandleW(L"ipodtrace.dll");
  const HMODULE library = recorder != nullptr ? recorder : GetModuleHandleW(L"ipodctl.dll");
  if (library == nullptr) return 0;
  for (const Replacement& one : kReplacements)
    if (!replaceImport(library, one.name, one.address)) return 0;
  return 1;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  DisableThreadLibraryCalls(module);
  streamDriverInstall();
  return TRUE;
}
