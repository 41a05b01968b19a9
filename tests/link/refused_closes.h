#pragma once

namespace ipodctl {

/// The number of CloseHandle calls so far that the platform has refused because their handle was
/// not open (any more). Only in programs that link refused_closes.cpp.
int refusedCloses();

}  // namespace ipodctl
