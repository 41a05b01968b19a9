// A picture of a trace.
#pragma once

#include <string>

#include "iaptrace/statistics.h"

namespace iaptrace {

/// Returns an SVG file: the stages of each connection, the latency of each request, the messages of
/// each lingo and the bytes of both directions over the time. It is well-formed XML whatever the
/// trace contains.
std::string timelineOf(const Conversation& items, const Exchanges& exchanges,
                       const Statistics& statistics, const std::string& device);

}  // namespace iaptrace
