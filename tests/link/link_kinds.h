#pragma once

#include <memory>
#include <string>

#include "link/serial_transport.h"
#include "link/usb_transport.h"
#include "support/message_bytes.h"
#include "support/row_name.h"

namespace ipodctl {

/// What differs between the two kinds of transport.
struct LinkKind : NamedRow {
  std::unique_ptr<Transport> (*create)();
  const char* deviceName;
  Bytes sync;  ///< before a frame's start byte
  const char* openText;
  const char* closedText;
  const char* writingText;
};

template <class Kind>
std::unique_ptr<Transport> createTransport() {
  return std::make_unique<Kind>();
}

// They are not inline: Clang for Windows initialises inline variables in any order.
const LinkKind kSerialKind{"Serial",
                           createTransport<SerialTransport>,
                           "COM1:",
                           {0xFF},
                           "OPENING DEVICE COM1:\n"
                           "COM aperta correttamente\n"
                           "com baudrate = 57600\n"
                           "com parity = 0\n"
                           "com byte size = 8\n"
                           "com stop bits = 0\n"
                           "com rts flow control = 0\n",
                           "serial closed\n",
                           "WRITING ON DEVICE\n"};

const LinkKind kUsbKind{"Usb",
                        createTransport<UsbTransport>,
                        "IPD1:",
                        {},
                        "OPENING DEVICE\nUSB aperta correttamente\n",
                        "usb closed\n",
                        "WRITING ON DEVICE\nOver USB\n"};

const LinkKind kLinkKinds[] = {kSerialKind, kUsbKind};

}  // namespace ipodctl
