// iaptrace redact: a trace that can be shown to others.
#pragma once

#include "iaptrace/command_line.h"

namespace iaptrace {

int runRedact(const Arguments& arguments);

}  // namespace iaptrace
