// What a host and an iPod said to each other, cut out of the bytes of a trace.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "trace/trace.h"
#include "wire/message.h"

namespace iaptrace {

using simulator::Bytes;
using simulator::ByteView;
using simulator::Message;

enum class Sender { kHost, kIpod };

/// A message, bytes that are none, or an event of the device.
struct Item {
  enum class Kind {
    kMessage,      ///< a frame with a correct checksum
    kMalformed,    ///< the same, but its payload is too short for a command
    kBadChecksum,  ///< a whole frame with a wrong checksum
    kUnfinished,   ///< the start of a frame without its end
    kNoise,        ///< bytes outside any frame
    kEvent,        ///< of the device or of the audio library; `event` describes it
  };

  Kind kind = Kind::kMessage;
  Sender sender = Sender::kHost;
  trace::Time begun{0};  ///< of the first byte
  trace::Time at{0};     ///< of the last byte
  size_t firstLine = 0;  ///< in the trace's file, of the first byte
  size_t line = 0;       ///< of the last byte
  Bytes bytes;           ///< as they were on the wire, without the sync byte before a frame
  bool hasSync = false;  ///< a sync byte FF is directly before the start byte
  bool isLong = false;   ///< the frame has the long form of the length
  Message message;       ///< kMessage
  std::shared_ptr<const trace::Record> event;  ///< kEvent; otherwise null

  bool isMessage() const { return kind == Kind::kMessage; }
  bool isFrom(Sender wanted) const { return kind != Kind::kEvent && sender == wanted; }
};

using Conversation = std::vector<Item>;

/// Returns what happened on one device, in the order in which it was complete. Events of the audio
/// library belong to every device. A frame that begins inside a damaged one is found.
Conversation conversationOf(const trace::Trace& records, const std::string& device);

}  // namespace iaptrace
