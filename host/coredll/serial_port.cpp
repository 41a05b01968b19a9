#include "serial_port.h"

#include <sys/ioctl.h>
#include <termios.h>

#include <cstring>

#include "comm_state.h"
#include "comm_timeouts.h"

namespace coredll {
namespace {

/// Does nothing on a terminal without the RTS line.
void driveRts(int terminal, bool isRaised) {
  const int line = TIOCM_RTS;
  ioctl(terminal, isRaised ? TIOCMBIS : TIOCMBIC, &line);
}

/// Returns false, and leaves the line unchanged, when the terminal does not accept `state`.
bool applyLineSettings(int terminal, const DCB& state) {
  termios before = {};
  if (tcgetattr(terminal, &before) != 0) return false;
  termios line = before;
  if (!putLineSettings(state, line) || tcsetattr(terminal, TCSANOW, &line) != 0) return false;
  DCB taken = state;
  if (tcgetattr(terminal, &line) == 0) getLineSettings(line, taken);
  if (std::memcmp(&taken, &state, sizeof taken) == 0) return true;
  tcsetattr(terminal, TCSANOW, &before);
  return false;
}

}  // namespace

DWORD SerialPort::getState(DCB& state) {
  return whileOpen([&](int terminal) {
    const std::lock_guard lock(mutex);
    return readState(terminal, state);
  });
}

DWORD SerialPort::setState(const DCB& wanted) {
  return whileOpen([&](int terminal) {
    const std::lock_guard lock(mutex);
    return changeState(terminal, wanted);
  });
}

DWORD SerialPort::getTimeouts(COMMTIMEOUTS& copy) {
  copy = timeoutsNow();
  return ERROR_SUCCESS;
}

DWORD SerialPort::setTimeouts(const COMMTIMEOUTS& wanted) {
  if (!areUsable(wanted)) return ERROR_INVALID_PARAMETER;
  const std::lock_guard lock(mutex);
  timeouts = wanted;
  return ERROR_SUCCESS;
}

TransferPlan SerialPort::planRead(DWORD count) { return readPlan(timeoutsNow(), count); }

TransferPlan SerialPort::planWrite(DWORD count) { return writePlan(timeoutsNow(), count); }

COMMTIMEOUTS SerialPort::timeoutsNow() {
  const std::lock_guard lock(mutex);
  return timeouts;
}

DWORD SerialPort::readState(int terminal, DCB& state) const {
  termios line = {};
  if (tcgetattr(terminal, &line) != 0) return ERROR_GEN_FAILURE;
  state = {};
  state.DCBlength = sizeof state;
  state.fBinary = TRUE;
  state.fDtrControl = DTR_CONTROL_ENABLE;
  state.fRtsControl = rtsControl & 3u;
  getLineSettings(line, state);
  return ERROR_SUCCESS;
}

DWORD SerialPort::changeState(int terminal, const DCB& wanted) {
  DCB current = {};
  if (const DWORD error = readState(terminal, current)) return error;
  if (!differInSettingsOnly(wanted, current)) return ERROR_INVALID_PARAMETER;
  if (wanted.fRtsControl > RTS_CONTROL_ENABLE) return ERROR_INVALID_PARAMETER;
  if (!applyLineSettings(terminal, wanted)) return ERROR_INVALID_PARAMETER;
  rtsControl = static_cast<BYTE>(wanted.fRtsControl);
  driveRts(terminal, rtsControl == RTS_CONTROL_ENABLE);
  return ERROR_SUCCESS;
}

}  // namespace coredll
