// Opening, reading and writing a device.
#include <sys/eventfd.h>
#include <windows.h>

#include <memory>
#include <utility>

#include "device_names.h"
#include "handle_table.h"
#include "last_error.h"
#include "recorder.h"
#include "serial_port.h"
#include "stream_device.h"
#include "terminal.h"
#include "transfer.h"

namespace coredll {
namespace {

std::shared_ptr<Device> makeDevice(const std::string& name, bool isSerialPort, Descriptor terminal,
                                   Descriptor wake) {
  if (isSerialPort) return std::make_shared<SerialPort>(name, std::move(terminal), std::move(wake));
  return std::make_shared<StreamDevice>(name, std::move(terminal), std::move(wake));
}

HANDLE openDevice(const std::string& name) {
  const auto entry = findDevice(name);
  if (!entry) return fail(ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
  Descriptor terminal = openTerminal(entry->path);
  if (!terminal.isOpen()) return INVALID_HANDLE_VALUE;
  Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wake.isOpen()) return fail(ERROR_TOO_MANY_OPEN_FILES, INVALID_HANDLE_VALUE);
  return handles().open(
      makeDevice(name, entry->isSerialPort, std::move(terminal), std::move(wake)));
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
