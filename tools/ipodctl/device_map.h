// The ends of the wire that IPODCTL_DEVICES names.
#pragma once

#include <string>

namespace tool {

/// Returns what the device is mapped to; empty when it is not mapped.
std::string mappedDevice(const std::string& name);

/// Maps a device for this process and those that it starts. Other devices keep their entry.
void mapDevice(const std::string& name, const std::string& end);

}  // namespace tool
