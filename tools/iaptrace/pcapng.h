// iaptrace pcapng: a capture file for Wireshark.
#pragma once

#include "iaptrace/command_line.h"

namespace iaptrace {

int runPcapng(const Arguments& arguments);

}  // namespace iaptrace
