// iaptrace stats: how often and how fast each command was answered.
#pragma once

#include "iaptrace/command_line.h"

namespace iaptrace {

int runStats(const Arguments& arguments);

}  // namespace iaptrace
