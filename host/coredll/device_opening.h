#pragma once

#include <memory>
#include <string>

#include "device.h"

namespace coredll {

/// Opens what the name of a device is mapped to. Throws OpenFailure, and std::bad_alloc.
std::shared_ptr<Device> openedDevice(const std::string& name);

}  // namespace coredll
