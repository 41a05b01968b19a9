// How a command is sent and how long its answer is awaited.

#include "controller/ipod_controller_base.h"

namespace ipodctl {
namespace {

constexpr uint32_t kReplyNanoseconds = 0;
constexpr uint32_t kReplySeconds = 1;

}  // namespace

bool IpodControllerBase::clearReplies() {
  if (!transport) return false;
  transport->flushMessages();
  return true;
}

std::unique_ptr<LingoMessage> IpodControllerBase::nextMessage() {
  std::unique_ptr<LingoMessage> message = transport->getMessage(kReplyNanoseconds, kReplySeconds);
  waitTimedOut = message ? 0 : 1;
  return message;
}

/// Any number of other Extended Interface messages may precede the acknowledgement, among them
/// acknowledgements with another status: a command that failed ends a second after the last
/// message. A message of another lingo ends the wait.
bool IpodControllerBase::awaitAcknowledgement(uint16_t command) {
  while (const std::unique_ptr<LingoMessage> message = nextMessage()) {
    const auto* reply = messageAs<ExtendedInterfaceMessage>(*message);
    if (reply == nullptr) return false;
    if (reply->acknowledges(command)) return true;
  }
  return false;
}

}  // namespace ipodctl
