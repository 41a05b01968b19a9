#pragma once

#include "link/device_transport.h"

namespace ipodctl {

/// The link over a serial COM port: 57600 baud, 8N1, frames with the sync byte.
class SerialTransport final : public DeviceTransport {
 public:
  SerialTransport();
  ~SerialTransport() override;

 private:
  int openDevice(HANDLE& handleOut, const char* name) override;
  int readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) override;
  const char* closedText() const override { return "serial closed\n"; }
  const char* writingText() const override { return "WRITING ON DEVICE\n"; }
};

/// Opens a serial port with 8 data bits, no parity, one stop bit, RTS off, and reads that return at
/// once with what has arrived. Returns 0, or -1 and leaves `handleOut` unchanged.
int serialOpen(HANDLE& handleOut, const char* name, uint32_t baudRate);

}  // namespace ipodctl
