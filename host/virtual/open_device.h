// An open device.
#pragma once

#include <windows.h>

#include <cstdint>

#include "coredll/device.h"
#include "named_object.h"
#include "virtual_device.h"

namespace virtual_platform {

/// Results are error codes of windows.h. It belongs to the world in which it was opened; elsewhere
/// its device is gone.
class OpenDevice final : public NamedObject {
 public:
  static constexpr unsigned kKinds = coredll::kStreamDeviceKind | coredll::kSerialPortKind;

  OpenDevice(VirtualDevice& opened, bool isPort);

  /// `moved` starts at 0 and counts the bytes.
  DWORD read(BYTE* buffer, DWORD count, DWORD& moved);
  DWORD write(const BYTE* bytes, DWORD count, DWORD& moved);
  DWORD flush();
  void close() override;

  const bool isSerialPort;
  DCB state;
  COMMTIMEOUTS timeouts = {};

 private:
  struct Transfer;

  DWORD run(const Transfer& transfer, DWORD& moved);
  std::string shownCall(const Transfer& transfer);
  DWORD move(const Transfer& transfer, DWORD done);
  void awaitWritten();
  DWORD awaitTurn(const Transfer& transfer);
  Readiness readiness(const Transfer& transfer);
  DWORD transferAll(const Transfer& transfer, DWORD& moved);
  bool isHere() const;

  VirtualDevice& device;
  const std::uint64_t worldId;
  unsigned callsInside = 0;
  bool isWriting = false;
};

}  // namespace virtual_platform
