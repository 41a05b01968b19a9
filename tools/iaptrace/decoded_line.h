// The lines of `iaptrace decode`: one a message, before it is known how they are printed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "iaptrace/annotation.h"

namespace iaptrace {

/// How important a line is.
enum class Weight { kUsual, kEvent, kUnasked, kFault };

struct DecodedLine {
  trace::Time at{0};
  size_t line = 0;                 ///< in the trace's file
  const Item* item = nullptr;      ///< of a logo the first packet
  std::optional<Message> message;  ///< also of a frame with a wrong checksum
  std::string what;                ///< lingo, command and fields; or what happened
  std::optional<trace::Time> latency;
  std::vector<std::string> marks;  ///< what is unusual, in words
  size_t folded = 0;               ///< the packets of a logo in this line
  Weight weight = Weight::kUsual;
};

/// Returns what is printed, in order. The items must outlive the lines.
std::vector<DecodedLine> decodedLines(const Conversation& items, bool foldsLogos);

}  // namespace iaptrace
