// Maps the names of devices to terminals.
#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

namespace coredll {

struct DeviceEntry {
  std::string path;  ///< what follows the '='
  bool isSerialPort;
};

/// Returns a CE name with one byte for each character. A character that no device name has is '?'.
std::string narrowed(LPCWSTR name);

/// Case does not matter.
bool isSameName(std::string_view first, std::string_view second);

/// Returns the present IPODCTL_DEVICES for a person.
std::string deviceMap();

/// Returns the entry of the CE name in the present IPODCTL_DEVICES; no value when there is none.
std::optional<DeviceEntry> findDevice(const std::string& wanted);

}  // namespace coredll
