// Maps the names of devices to terminals.
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace coredll {

struct DeviceEntry {
  std::string path;
  bool isSerialPort;
};

/// Returns the entry of the CE name in the present IPODCTL_DEVICES; no value when there is none.
std::optional<DeviceEntry> findDevice(LPCWSTR name);

}  // namespace coredll
