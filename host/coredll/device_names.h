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

/// Returns a CE name with one byte for each character. A character that no device name has is '?'.
std::string narrowed(LPCWSTR name);

/// Returns the entry of the CE name in the present IPODCTL_DEVICES; no value when there is none.
std::optional<DeviceEntry> findDevice(const std::string& name);

}  // namespace coredll
