#pragma once

#include <string>
#include <vector>

namespace iaptrace {

/// Runs "iaptrace replay" and returns its exit status: 0 played to the end, 1 the host or the iPod
/// differs or does not go on, 2 wrong usage or an unreadable file.
int runReplay(const std::vector<std::string>& arguments);

}  // namespace iaptrace
