// Which terminal stands for a device.
#ifndef COREDLL_DEVICE_NAMES_H
#define COREDLL_DEVICE_NAMES_H

#include <windows.h>

#include <optional>
#include <string>

namespace coredll {

struct DeviceEntry {
  std::string path;
  bool isSerialPort;
};

// Looks the CE name up in IPODCTL_DEVICES as it is now; none when it is not there.
std::optional<DeviceEntry> findDevice(LPCWSTR name);

}  // namespace coredll

#endif
