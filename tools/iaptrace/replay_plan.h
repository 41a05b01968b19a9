// What the iPod of a trace did, and when, as steps that can be done again.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "iaptrace/conversation.h"
#include "simulated_time.h"

namespace iaptrace {

/// The time that the library waits for an answer. It begins again with each message of the iPod.
constexpr simulator::Time kHostWait = simulator::seconds(1);

/// Returns whether the host sends such a message as an answer to the iPod. The library sends some
/// of these on another thread than its requests, so their order among the requests varies.
bool isHostAnswer(const Message& message);

struct Step {
  enum class Kind {
    kHostOpens,
    kHostCannotOpen,  ///< the host tries to open the device, and fails
    kHostCloses,
    kHostSends,    ///< one message of the host, or bytes that are none
    kIpodSends,    ///< the bytes of one read of the host, or one message of several in it
    kCablePulled,  ///< the host's read or write fails
  };

  Kind kind = Kind::kIpodSends;
  size_t line = 0;         ///< in the trace's file
  simulator::Time gap{0};  ///< since the step before
  Bytes bytes;
  std::optional<Message> message;  ///< kHostSends

  /// kIpodSends: whether a host that has sent its next request has no more use for these bytes.
  bool isAnswer = false;
  /// kIpodSends: an answer that the library discarded, because it had taken another one before. It
  /// is sent only while the library is between two requests.
  bool isSpare = false;
  /// Whether the host's wait began with this step: its request, or a message for which it waited.
  bool beginsWait = false;
  /// kIpodSends, kCablePulled: it followed after the host's wait was over.
  bool isLate = false;
  /// Whether the host waited until then. If not, nothing depends on the time of this step.
  bool isAwaited = true;

  bool isOfIpod() const { return kind == Kind::kIpodSends || kind == Kind::kCablePulled; }
  bool isHostAnswer() const { return message && iaptrace::isHostAnswer(*message); }
  bool isRequest() const { return kind == Kind::kHostSends && !isHostAnswer(); }
};

using Plan = std::vector<Step>;

/// Returns the steps of one device of a trace. Each connection begins with kHostOpens and ends with
/// kHostCloses or kCablePulled, if its end is in the trace.
Plan planOf(const trace::Trace& records, const std::string& device);

}  // namespace iaptrace
