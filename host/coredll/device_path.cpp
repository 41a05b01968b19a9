#include <desk.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "default_device.h"
#include "device_map.h"
#include "device_names.h"
#include "open_failure.h"

namespace coredll {
namespace {

/// Returns the path of a terminal; empty when the device does not lead to one.
std::string pathOf(const std::string& device) {
  if (const std::optional<DeviceEntry> entry = findDevice(device))
    return wireEndOf(entry->path).path;
  const bool isMapped = std::getenv("IPODCTL_DEVICES") != nullptr;
  return !isMapped && isSameName(device, "IPD1:") ? kDefaultLink : "";
}

}  // namespace
}  // namespace coredll

unsigned deskDevicePath(const char* device, char* path, unsigned size) {
  try {
    const std::string found = coredll::pathOf(device);
    if (found.empty() || found.size() >= size) return 0;
    std::memcpy(path, found.c_str(), found.size() + 1);
    return static_cast<unsigned>(found.size());
  } catch (const coredll::OpenFailure&) {
    return 0;
  }
}
