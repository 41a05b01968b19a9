// A serial port's settings and time-outs: the port accepts and stores what a line can have.
#include <termios.h>
#include <windows.h>

#include "call.h"
#include "coredll/comm_state.h"
#include "coredll/comm_timeouts.h"
#include "coredll/handle_table.h"
#include "open_device.h"

namespace virtual_platform {
namespace {

template <typename Record, typename Call>
BOOL onPort(const char* function, HANDLE handle, Record* record, Call call) {
  const auto port = coredll::objectOf<OpenDevice>(handle);
  if (!port) return FALSE;
  if (!port->isSerialPort) return coredll::fail(ERROR_INVALID_HANDLE, FALSE);
  beginCall();
  const DWORD error = record == nullptr ? ERROR_INVALID_PARAMETER : call(*port);
  port->meet();
  note([&] { return text("%s(%s): error %u", function, port->name().c_str(), error); });
  return coredll::report(error);
}

DWORD changeState(DCB& current, const DCB& wanted) {
  termios line = {};
  const bool isPossible = coredll::differInSettingsOnly(wanted, current) &&
                          wanted.fRtsControl <= RTS_CONTROL_ENABLE &&
                          coredll::putLineSettings(wanted, line);
  if (!isPossible) return ERROR_INVALID_PARAMETER;
  const DWORD length = current.DCBlength;
  current = wanted;
  current.DCBlength = length;
  return ERROR_SUCCESS;
}

}  // namespace
}  // namespace virtual_platform

using virtual_platform::OpenDevice;

BOOL WINAPI GetCommState(HANDLE port, LPDCB state) {
  return virtual_platform::onPort("GetCommState", port, state, [&](OpenDevice& device) {
    *state = device.state;
    return ERROR_SUCCESS;
  });
}

BOOL WINAPI SetCommState(HANDLE port, LPDCB state) {
  return virtual_platform::onPort("SetCommState", port, state, [&](OpenDevice& device) {
    return virtual_platform::changeState(device.state, *state);
  });
}

BOOL WINAPI GetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  return virtual_platform::onPort("GetCommTimeouts", port, timeouts, [&](OpenDevice& device) {
    *timeouts = device.timeouts;
    return ERROR_SUCCESS;
  });
}

BOOL WINAPI SetCommTimeouts(HANDLE port, LPCOMMTIMEOUTS timeouts) {
  return virtual_platform::onPort("SetCommTimeouts", port, timeouts, [&](OpenDevice& device) {
    if (!coredll::areUsable(*timeouts)) return ERROR_INVALID_PARAMETER;
    device.timeouts = *timeouts;
    return ERROR_SUCCESS;
  });
}
