// Traces that a test writes by hand.
#pragma once

#include <string>

#include "iaptrace/conversation.h"
#include "trace/trace_parser.h"

namespace iaptrace {

/// Returns the text of a trace with these lines.
inline std::string traceText(const std::string& lines) { return "# ipodctl-trace 1\n" + lines; }

/// Returns what happened on the device IPD1:.
inline Conversation typedConversation(const std::string& lines) {
  return conversationOf(trace::parseTrace(traceText(lines)), "IPD1:");
}

}  // namespace iaptrace
