#pragma once

#include <string>
#include <vector>

namespace iaptrace {

/// Plays the iPod of a trace to a host, or its host to an iPod. Returns kFailed when the other end
/// differs or does not go on.
int runReplay(const std::vector<std::string>& arguments);

}  // namespace iaptrace
