// How a command goes out, how its reply is told from other messages, and how long it is awaited.

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
  silent = message ? 0 : 1;
  return message;
}

/// The first message that comes is the reply, if it is of the command's lingo.
std::unique_ptr<LingoMessage> IpodControllerBase::nextReply(LingoId lingo) {
  std::unique_ptr<LingoMessage> message = nextMessage();
  if (!message || message->getLingo() != lingo) return nullptr;
  return message;
}

/// Any number of other Extended Interface messages may come before the acknowledgement, among them
/// acknowledgements with another status: a command that failed ends a second after the last
/// message.
bool IpodControllerBase::awaitAcknowledgement(uint16_t command) {
  while (const std::unique_ptr<LingoMessage> message = nextReply(kExtendedInterfaceLingo)) {
    const auto& reply = static_cast<const ExtendedInterfaceMessage&>(*message);
    uint8_t status = kStatusOk;
    uint16_t acknowledgedCommand = 0;
    if (reply.decodeIpodAck(status, acknowledgedCommand) && acknowledgedCommand == command &&
        status == kStatusOk) {
      return true;
    }
  }
  return false;
}

}  // namespace ipodctl
