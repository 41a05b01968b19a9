// The host's requests of a trace, with what is known about each.
#pragma once

#include <optional>
#include <vector>

#include "iaptrace/conversation.h"
#include "iaptrace/exchange.h"

namespace iaptrace {

struct Asked {
  size_t index = 0;  ///< of the request, in the conversation
  const Item* request = nullptr;
  std::vector<const Item*> replies;
  bool inExtendedMode = false;  ///< when it was sent
  /// It was not answered, although the iPod sent something later in this connection.
  bool isIgnored = false;

  const Message& message() const { return request->message; }
  /// Returns the last acknowledgement's status, if it was acknowledged.
  std::optional<uint8_t> status() const;
  /// Returns the reply if it is not an acknowledgement; null otherwise.
  const Message* reply() const;
  /// Returns the time until a reply.
  trace::Time latency(size_t reply = 0) const { return replies[reply]->at - request->at; }
};

/// Returns the host's requests in their order. The conversation must outlive them.
std::vector<Asked> askedIn(const Conversation& items);

}  // namespace iaptrace
