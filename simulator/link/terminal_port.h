#pragma once

#include <string>

#include "link/file_descriptor.h"
#include "link/port.h"

namespace simulator {

/// Returns the speeds that a terminal can have, with blanks between them.
std::string terminalSpeeds();
bool isTerminalSpeed(unsigned baud);

/// A terminal device, like a serial port whose cable leads to the accessory. Nobody sees on a
/// serial line whether an accessory is there: it always is, until the device itself has gone.
class TerminalPort final : public Port {
 public:
  /// Throws PortError.
  TerminalPort(std::string devicePath, unsigned baud, PortNotice notice);

  const std::string& place() const override { return path; }
  int descriptor() const override { return terminal.get(); }
  int watch() const override { return -1; }
  Presence presence() override;
  Bytes read() override;
  size_t write(ByteView bytes) override;
  void dropUnread() override {}

 private:
  const std::string path;
  const PortNotice notify;
  FileDescriptor terminal;
  bool isGone = false;
};

}  // namespace simulator
