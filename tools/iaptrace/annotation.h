// What the other messages say about each item of a conversation.
#pragma once

#include <optional>
#include <vector>

#include "iaptrace/exchange.h"

namespace iaptrace {

/// Numbers are indexes in the conversation.
struct Annotation {
  std::optional<size_t> request;  ///< that the message answers
  trace::Time latency{0};         ///< from the end of the request to the end of the answer
  bool isUnanswered = false;      ///< a request without an answer, or with a pending one only
  bool isUnsolicited = false;     ///< a notification
  bool isUnexpected = false;      ///< an answer for which no request is open
  bool isOutOfTurn = false;       ///< an answer to an earlier request than the latest
  bool isRefusal = false;         ///< an acknowledgement of a failure
};

/// Returns one annotation for each item.
std::vector<Annotation> annotate(const Conversation& items, const Exchanges& exchanges);

}  // namespace iaptrace
