// The iPod that is used when IPODCTL_DEVICES is not set.
#pragma once

#include <string>

namespace coredll {

/// The link that ipodsim makes unless it is started with another one.
constexpr char kDefaultLink[] = "/tmp/ipod";

/// Returns the pseudo-terminal that `link` leads to. Throws OpenFailure unless both belong to this
/// user: in a folder for everybody, another user could have made the link.
std::string defaultTerminal(const std::string& link = kDefaultLink);

}  // namespace coredll
