#pragma once

#include <cstdint>

/// A slice of a sweep has one of this many times fewer points where AddressSanitizer makes each of
/// them several times dearer. What it finds depends on the path through the code, and the thinner
/// slice takes all paths, too.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint64_t kSliceThinning = 5;
#else
constexpr std::uint64_t kSliceThinning = 1;
#endif
