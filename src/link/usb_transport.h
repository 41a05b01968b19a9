#pragma once

#include "link/device_transport.h"

namespace ipodctl {

/// The link over the platform's iPod stream driver: frames without the sync byte. It carries no
/// audio.
class UsbTransport final : public DeviceTransport {
 public:
  UsbTransport();
  ~UsbTransport() override;

 private:
  int openDevice(HANDLE& handleOut, const char* name) override;
  int readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) override;
  const char* closedText() const override { return "usb closed\n"; }
  const char* writingText() const override { return "WRITING ON DEVICE\nOver USB\n"; }
};

/// Opens the stream driver. Returns 0, or -1 and leaves `handleOut` unchanged.
int usbOpen(HANDLE& handleOut, const char* name);

}  // namespace ipodctl
