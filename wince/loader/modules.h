#pragma once

#include <string>

#include "loader/image.h"

namespace loader {

/// Returns the image of this file and adds a reference to it. The first reference loads it. Returns
/// null and the problem when it cannot be loaded.
Image* useModule(const std::string& path, Problem& problem);

/// Removes a reference. The last one unloads the image.
void releaseModule(Image* image);

/// Returns a function of the device's coredll that knows modules, or null.
void* moduleFunction(const std::string& name);

}  // namespace loader
