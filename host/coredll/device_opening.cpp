#include "device_opening.h"

#include <sys/eventfd.h>

#include <cstdlib>
#include <utility>

#include "complaint.h"
#include "default_device.h"
#include "device_map.h"
#include "device_names.h"
#include "open_failure.h"
#include "serial_ipod.h"
#include "serial_port.h"
#include "socket.h"
#include "stream_device.h"
#include "terminal.h"

namespace coredll {
namespace {

/// Returns the entry of a name, or of the default device.
DeviceEntry entryOf(const std::string& name) {
  if (auto entry = findDevice(name)) return *entry;
  const bool isDefault = std::getenv("IPODCTL_DEVICES") == nullptr && isSameName(name, "IPD1:");
  if (isDefault) return {defaultTerminal(), false};
  throw OpenFailure(ERROR_FILE_NOT_FOUND,
                    "is not in IPODCTL_DEVICES; add it, for example IPODCTL_DEVICES=" + name + "=" +
                        kDefaultLink);
}

WireDescriptor openEnd(const WireEnd& end) {
  switch (end.kind) {
    case WireEnd::Kind::kSocket:
      return {connectTo(end.host, end.port), true};
    case WireEnd::Kind::kSerialLine:
      return {openTerminal(end.path, end.speed), false};
    case WireEnd::Kind::kTerminal:
      break;
  }
  return {openTerminal(end.path), false};
}

/// The settings of a serial port are those of a terminal, and its program sends the sync bytes.
void requireTerminal(const WireEnd& end) {
  if (end.kind == WireEnd::Kind::kTerminal) return;
  throw OpenFailure(ERROR_FILE_NOT_FOUND,
                    "is a serial port; write only the path of its terminal in IPODCTL_DEVICES");
}

std::shared_ptr<Device> makeDevice(const std::string& name, bool isSerialPort,
                                   WireEnd::Kind endKind, WireDescriptor end, Descriptor wake) {
  if (isSerialPort) return std::make_shared<SerialPort>(name, std::move(end), std::move(wake));
  if (endKind == WireEnd::Kind::kSerialLine) {
    return std::make_shared<SerialIpod>(name, std::move(end), std::move(wake));
  }
  return std::make_shared<StreamDevice>(name, std::move(end), std::move(wake));
}

}  // namespace

std::shared_ptr<Device> openedDevice(const std::string& name) {
  const DeviceEntry entry = entryOf(name);
  const WireEnd end = wireEndOf(entry.path);
  if (entry.isSerialPort) requireTerminal(end);
  WireDescriptor opened = openEnd(end);
  if (isDebugging()) {
    sayLine(name + " is open: " + entry.path + ", " + settingsOf(opened.descriptor.get()) + ", " +
            deviceMap());
  }
  Descriptor wake(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!wake.isOpen()) {
    throw OpenFailure(ERROR_TOO_MANY_OPEN_FILES,
                      "cannot be opened: too many open files; close some in this program");
  }
  return makeDevice(name, entry.isSerialPort, end.kind, std::move(opened), std::move(wake));
}

}  // namespace coredll
