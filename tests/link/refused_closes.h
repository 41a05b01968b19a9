#pragma once

namespace ipodctl {

/// Returns the number of CloseHandle calls that the platform has refused so far because the handle
/// was not open. Only programs that link refused_closes.cpp have it.
int refusedCloses();

}  // namespace ipodctl
