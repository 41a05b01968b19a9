// A serial port's settings and time-outs.
#include <windows.h>

#include "handle_table.h"
#include "last_error.h"
#include "serial_port.h"

namespace coredll {
namespace {

template <typename Record>
BOOL onPort(HANDLE handle, Record* record, DWORD (SerialPort::*call)(Record&)) {
  const auto port = objectOf<SerialPort>(handle);
  if (!port) return FALSE;
  return report(record == nullptr ? ERROR_INVALID_PARAMETER : ((*port).*call)(*record));
}

}  // namespace
}  // namespace coredll

BOOL WINAPI GetCommState(HANDLE port, LPDCB state) {
  return coredll::onPort(port, state, &coredll::SerialPort::getState);
}

BOOL WINAPI SetCommState(HANDLE port, LPDCB state) {
  return coredll::onPort<const DCB>(port, state, &coredll::SerialPort::setState);
}

BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  return coredll::onPort(port, timeouts, &coredll::SerialPort::getTimeouts);
}

BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  return coredll::onPort<const COMMTIMEOUTS>(port, timeouts, &coredll::SerialPort::setTimeouts);
}
