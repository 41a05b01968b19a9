#include "link/serial_transport.h"

#include "base/debug_print.h"
#include "base/os_primitives.h"

namespace ipodctl {
namespace {

constexpr uint32_t kBaudRate = 57600;
constexpr BYTE kDataBits = 8;

void setLine(HANDLE port, uint32_t baudRate) {
  DCB state{};
  state.DCBlength = sizeof(state);
  GetCommState(port, &state);
  state.fRtsControl = RTS_CONTROL_DISABLE;
  state.BaudRate = baudRate;
  state.Parity = NOPARITY;
  state.ByteSize = kDataBits;
  state.StopBits = ONESTOPBIT;
  SetCommState(port, &state);
  GetCommState(port, &state);
  debugPrint("com baudrate = %d\n", static_cast<int>(state.BaudRate));
  debugPrint("com parity = %d\n", state.Parity);
  debugPrint("com byte size = %d\n", state.ByteSize);
  debugPrint("com stop bits = %d\n", state.StopBits);
  debugPrint("com rts flow control = %d\n", static_cast<int>(state.fRtsControl));
}

void setTimeouts(HANDLE port) {
  COMMTIMEOUTS timeouts{};
  GetCommTimeouts(port, &timeouts);
  timeouts.ReadIntervalTimeout = MAXDWORD;
  timeouts.ReadTotalTimeoutMultiplier = 0;
  timeouts.ReadTotalTimeoutConstant = 0;
  timeouts.WriteTotalTimeoutMultiplier = 0;
  timeouts.WriteTotalTimeoutConstant = 0;
  SetCommTimeouts(port, &timeouts);
}

}  // namespace

int serialOpen(HANDLE& handleOut, const char* name, uint32_t baudRate) {
  debugPrint("OPENING DEVICE %s\n", name);
  HANDLE port = openDeviceFile(name);
  if (port == INVALID_HANDLE_VALUE) {
    debugPrint("ERRORE DI APERTURA\n");
    return -1;
  }
  debugPrint("COM aperta correttamente\n");
  setLine(port, baudRate);
  setTimeouts(port);
  handleOut = port;
  return 0;
}

SerialTransport::SerialTransport() : DeviceTransport(FrameKind::kWithSyncByte) {}

SerialTransport::~SerialTransport() { shutDown(); }

int SerialTransport::openDevice(HANDLE& handleOut, const char* name) {
  return serialOpen(handleOut, name, kBaudRate);
}

int SerialTransport::readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) {
  return serialRead(device, buffer, maximum);
}

}  // namespace ipodctl
