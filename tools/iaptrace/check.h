#pragma once

#include "iaptrace/command_line.h"

namespace iaptrace {

/// `iaptrace check`: says what went wrong in a trace. Returns kFailed for a fault, and for what
/// could not be explained.
int runCheck(const Arguments& arguments);

}  // namespace iaptrace
