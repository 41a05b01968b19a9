// Prints the lines of `iaptrace decode`.
#pragma once

#include <iosfwd>

#include "iaptrace/decoded_line.h"

namespace iaptrace {

void printText(const std::vector<DecodedLine>& lines, bool inColour, std::ostream& out);

/// Prints one object with an array "messages", one message a line.
void printJson(const std::string& device, const std::vector<DecodedLine>& lines, std::ostream& out);

}  // namespace iaptrace
