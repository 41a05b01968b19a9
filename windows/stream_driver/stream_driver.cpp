#include "stream_driver.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <cwchar>

namespace {

// A read of the stream driver blocks until there are bytes and then gives those that are there. It ends
// now and then without any, so that the reader learns of a close.
constexpr DWORD kSilenceMilliseconds = 1;
constexpr DWORD kLongestReadMilliseconds = 100;

constexpr DWORD kLongestVariable = 1024;
constexpr wchar_t kVariable[] = L"IPODCTL_DEVICES";

using CreateFileFunction = decltype(&CreateFileW);

/// Finds "name=port" between the commas of the variable and cuts the port out of it; null when
/// there is none.
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
  const HANDLE device = CreateFileW(port != nullptr ? port : name, access, share, security,
                                    disposition, flags, templateFile);
  if (port == nullptr || device == INVALID_HANDLE_VALUE) return device;
  COMMTIMEOUTS timeouts = {};
  timeouts.ReadIntervalTimeout = kSilenceMilliseconds;
  timeouts.ReadTotalTimeoutConstant = kLongestReadMilliseconds;
  SetCommTimeouts(device, &timeouts);
  return device;
}

/// A loaded module's header and tables, by their places in it.
template <class Type>
Type* at(HMODULE module, uintptr_t place) {
  return reinterpret_cast<Type*>(reinterpret_cast<uintptr_t>(module) + place);
}

const IMAGE_IMPORT_DESCRIPTOR* importsOf(HMODULE module) {
  const auto place = static_cast<uintptr_t>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
  const IMAGE_OPTIONAL_HEADER& header = at<IMAGE_NT_HEADERS>(module, place)->OptionalHeader;
  const DWORD table = header.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  return at<IMAGE_IMPORT_DESCRIPTOR>(module, table);
}

/// Where the module keeps the address of a function that it imports from one DLL; null when it does not.
ULONG_PTR* importIn(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& dll, const char* function) {
  const auto* name = at<IMAGE_THUNK_DATA>(module, dll.OriginalFirstThunk);
  for (auto* slot = at<IMAGE_THUNK_DATA>(module, dll.FirstThunk); name->u1.Ordinal != 0;
       ++slot, ++name) {
    if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
    const auto* entry = at<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData);
    if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0)
      return &slot->u1.Function;
  }
  return nullptr;
}

ULONG_PTR* importOf(HMODULE module, const char* function) {
  for (const auto* dll = importsOf(module); dll->Name != 0; ++dll) {
    if (ULONG_PTR* const slot = importIn(module, *dll, function)) return slot;
  }
  return nullptr;
}

bool replace(ULONG_PTR& slot, CreateFileFunction function) {
  DWORD protection = 0;
  if (!VirtualProtect(&slot, sizeof slot, PAGE_READWRITE, &protection)) return false;
  slot = reinterpret_cast<ULONG_PTR>(function);
  return VirtualProtect(&slot, sizeof slot, protection, &protection) != FALSE;
}

}  // namespace

int streamDriverInstall() {
  const HMODULE library = GetModuleHandleW(L"ipodctl.dll");
  if (library == nullptr) return 0;
  ULONG_PTR* const slot = importOf(library, "CreateFileW");
  return slot != nullptr && replace(*slot, openDevice) ? 1 : 0;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason != DLL_PROCESS_ATTACH) return TRUE;
  DisableThreadLibraryCalls(module);
  streamDriverInstall();
  return TRUE;
}
