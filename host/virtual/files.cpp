// Opening, reading and writing a device.
#include <windows.h>

#include <algorithm>
#include <string>

#include "call.h"
#include "coredll/transfer.h"
#include "failures.h"
#include "open_device.h"
#include "virtual_world.h"

namespace virtual_platform {
namespace {

/// Returns an empty text when the name has a character that no device name has.
std::string narrowed(LPCWSTR name) {
  constexpr WCHAR kLastAscii = 0x7f;
  std::string narrow;
  for (; *name != 0; ++name) {
    if (*name > kLastAscii) return {};
    narrow.push_back(static_cast<char>(*name));
  }
  return narrow;
}

bool isSerialPortName(const std::string& name) {
  constexpr char kPrefix[] = "COM";
  const std::string start = name.substr(0, 3);
  return std::equal(start.begin(), start.end(), kPrefix, kPrefix + 3,
                    [](char letter, char capital) { return (letter & ~0x20) == capital; });
}

HANDLE openDevice(const std::string& name) {
  beginCall();
  VirtualWorld* const world = VirtualWorld::current();
  VirtualDevice* const device = world ? world->findDevice(name) : nullptr;
  DWORD error = ERROR_SUCCESS;
  if (device == nullptr || !device->canBeOpened()) {
    error = ERROR_FILE_NOT_FOUND;
  } else if (world->isOpen(*device)) {
    error = ERROR_SHARING_VIOLATION;
  } else if (failuresOf("CreateFileW").strikesNext()) {
    error = ERROR_NOT_ENOUGH_MEMORY;
  }
  if (error != ERROR_SUCCESS) {
    note(text("CreateFileW(%s): error %u", name.c_str(), error));
    return coredll::fail(error, INVALID_HANDLE_VALUE);
  }
  const auto opened = std::make_shared<OpenDevice>(*device, isSerialPortName(name));
  note(text("CreateFileW(%s) = %s", name.c_str(), opened->name().c_str()));
  return coredll::handles().open(opened);
}

}  // namespace
}  // namespace virtual_platform

HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                          DWORD disposition, DWORD flags, HANDLE templateFile) {
  const bool isSupported = access == (GENERIC_READ | GENERIC_WRITE) && share == 0 &&
                           disposition == OPEN_EXISTING && flags == 0 && templateFile == nullptr;
  if (name == nullptr || !isSupported) {
    return coredll::fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  }
  return coredll::newHandle(INVALID_HANDLE_VALUE, [&] {
    return virtual_platform::openDevice(virtual_platform::narrowed(name));
  });
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped) {
  return coredll::transferOn<virtual_platform::OpenDevice>(
      file, buffer, count, read, overlapped, [&](virtual_platform::OpenDevice& device) {
        return device.read(static_cast<BYTE*>(buffer), count, *read);
      });
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped) {
  return coredll::transferOn<virtual_platform::OpenDevice>(
      file, buffer, count, written, overlapped, [&](virtual_platform::OpenDevice& device) {
        return device.write(static_cast<const BYTE*>(buffer), count, *written);
      });
}

BOOL WINAPI FlushFileBuffers(HANDLE file) {
  const auto device = coredll::objectOf<virtual_platform::OpenDevice>(file);
  return device ? coredll::report(device->flush()) : FALSE;
}
