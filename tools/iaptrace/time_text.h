// Times as people read them.
#pragma once

#include <string>

#include "trace/trace.h"

namespace iaptrace {

/// Returns a short time as "0.04 ms", "13.1 ms" or "1015 ms".
std::string millisecondsText(trace::Time time);

}  // namespace iaptrace
