// iaptrace decode: one line a message.
#pragma once

#include "iaptrace/command_line.h"

namespace iaptrace {

int runDecode(const Arguments& arguments);

}  // namespace iaptrace
