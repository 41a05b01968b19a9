// Says on standard error why the platform cannot do something.
#pragma once

#include <string>

namespace coredll {

/// Writes "ipodctl: TEXT" as one line, unless this process has already written the same text. The
/// line begins after what was printed to standard output, not inside it.
void complainOnce(const std::string& text) noexcept;

/// Returns whether IPODCTL_DEBUG asks for more.
bool isDebugging();
/// Does the same as complainOnce(), each time.
void sayLine(const std::string& text) noexcept;

}  // namespace coredll
