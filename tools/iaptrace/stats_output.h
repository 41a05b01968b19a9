// Prints the statistics of a trace.
#pragma once

#include <iosfwd>
#include <string>

#include "iaptrace/statistics.h"

namespace iaptrace {

void printText(const Statistics& statistics, const std::string& device, std::ostream& out);
void printJson(const Statistics& statistics, const std::string& device, std::ostream& out);

}  // namespace iaptrace
