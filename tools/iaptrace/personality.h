#pragma once

#include <string>
#include <vector>

namespace iaptrace {

/// Prints the personality of a trace's iPod, as ipodsim reads it.
int runPersonality(const std::vector<std::string>& arguments);

}  // namespace iaptrace
