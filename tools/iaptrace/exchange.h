// Which message answers which.
#pragma once

#include <optional>
#include <vector>

#include "iaptrace/conversation.h"

namespace iaptrace {

/// Returns whether the iPod answers this message of a host, or the host this one of an iPod.
bool expectsAnswer(Sender sender, const Message& request);

/// Returns whether `reply` can answer `request`: the reply of its command, or an acknowledgement
/// that names it.
bool answers(const Message& reply, const Message& request);

/// An acknowledgement's status; nothing for any other message. It is of the form "status, command".
std::optional<uint8_t> statusOf(const Message& message);

/// A request and what answered it. Numbers are indexes in the conversation.
struct Exchange {
  size_t request = 0;
  /// In their order: one, or an acknowledgement as pending and the final one, or one a record.
  std::vector<size_t> replies;

  bool isAnswered() const { return !replies.empty(); }
};

/// The messages of a conversation.
struct Exchanges {
  std::vector<Exchange> all;        ///< in the order of the requests
  std::vector<size_t> unsolicited;  ///< messages that the protocol sends unasked: notifications
  std::vector<size_t> unexpected;   ///< answers for which no request is open
};

/// Pairs the messages of a conversation. An answer belongs to the latest open request that it can
/// answer, in the same connection: between an open and a close of the device.
Exchanges exchangesOf(const Conversation& items);

}  // namespace iaptrace
