#pragma once

#include <string>

namespace isochplay {

/// Writes "ipodctl: IPODCTL_AUDIO: TEXT" to standard error, unless this process has already written
/// the same text.
void complainOnce(const std::string& text);

}  // namespace isochplay
