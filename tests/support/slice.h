#pragma once

#include <cstdint>

/// AddressSanitizer makes each point of a sweep several times slower, so a slice has fewer points
/// by this factor. What the sanitizer finds depends on the path through the code, and the thinner
/// slice covers all paths, too.
#ifdef __SANITIZE_ADDRESS__
constexpr std::uint64_t kSliceThinning = 5;
#else
constexpr std::uint64_t kSliceThinning = 1;
#endif
