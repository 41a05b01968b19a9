#include "link/usb_transport.h"

#include "base/debug_print.h"
#include "base/os_primitives.h"

namespace ipodctl {

int usbOpen(HANDLE& handleOut, const char* name) {
  debugPrint("OPENING DEVICE\n");
  HANDLE device = openDeviceFile(name);
  if (device == INVALID_HANDLE_VALUE) {
    debugPrint("ERRORE DI APERTURA\n");
    return -1;
  }
  debugPrint("USB aperta correttamente\n");
  handleOut = device;
  return 0;
}

UsbTransport::UsbTransport() : DeviceTransport(FrameKind::kWithoutSyncByte) {}

UsbTransport::~UsbTransport() { shutDown(); }

int UsbTransport::openDevice(HANDLE& handleOut, const char* name) {
  return usbOpen(handleOut, name);
}

int UsbTransport::readDevice(HANDLE device, uint8_t* buffer, uint32_t maximum) {
  return usbRead(device, buffer, maximum);
}

}  // namespace ipodctl
