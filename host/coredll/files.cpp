// Opening, reading and writing a device.
#include <windows.h>

#include <string>

#include "complaint.h"
#include "device_names.h"
#include "device_opening.h"
#include "handle_table.h"
#include "last_error.h"
#include "open_failure.h"
#include "recorder.h"
#include "transfer.h"

namespace coredll {
namespace {

/// Returns the handle of an opened device. Says why there is none.
HANDLE openDevice(const std::string& name) {
  try {
    return handles().open(openedDevice(name));
  } catch (const OpenFailure& failure) {
    complainOnce(name + " " + failure.what());
    if (isDebugging()) {
      sayLine(name + " is not open: error " + std::to_string(failure.code) + ", " + deviceMap());
    }
    return fail(failure.code, INVALID_HANDLE_VALUE);
  }
}

/// Opens a device and records the result.
HANDLE openRecorded(LPCWSTR wideName) {
  const std::string name = narrowed(wideName);
  lookForTrace();
  HANDLE opened = newHandle(INVALID_HANDLE_VALUE, [&] { return openDevice(name); });
  if (!mayRecord()) return opened;
  if (opened == INVALID_HANDLE_VALUE) {
    recordEvent(name, trace::Event::kOpenFailed, GetLastError());
  } else {
    recordEvent(name, trace::Event::kOpened);
  }
  return opened;
}

}  // namespace
}  // namespace coredll

HANDLE WINAPI CreateFileW(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES,
                          DWORD disposition, DWORD flags, HANDLE templateFile) {
  const bool isSupported = access == (GENERIC_READ | GENERIC_WRITE) && share == 0 &&
                           disposition == OPEN_EXISTING && flags == 0 && templateFile == nullptr;
  if (name == nullptr || !isSupported) {
    return coredll::fail(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
  }
  return coredll::newHandle(INVALID_HANDLE_VALUE, [&] { return coredll::openRecorded(name); });
}

BOOL WINAPI ReadFile(HANDLE file, LPVOID buffer, DWORD count, LPDWORD read,
                     LPOVERLAPPED overlapped) {
  return coredll::transferOn<coredll::Device>(
      file, buffer, count, read, overlapped, [&](coredll::Device& device) {
        return device.read(static_cast<BYTE*>(buffer), count, *read);
      });
}

BOOL WINAPI WriteFile(HANDLE file, LPCVOID buffer, DWORD count, LPDWORD written,
                      LPOVERLAPPED overlapped) {
  return coredll::transferOn<coredll::Device>(
      file, buffer, count, written, overlapped, [&](coredll::Device& device) {
        return device.write(static_cast<const BYTE*>(buffer), count, *written);
      });
}

BOOL WINAPI FlushFileBuffers(HANDLE file) {
  const auto device = coredll::objectOf<coredll::Device>(file);
  return device ? coredll::report(device->flush()) : FALSE;
}
