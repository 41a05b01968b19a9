#include "lingo/received_message.h"

#include <new>

#include "lingo/digital_audio_message.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/simple_remote_message.h"

namespace ipodctl {
namespace {

template <class Message>
std::unique_ptr<LingoMessage> make() {
  return std::unique_ptr<LingoMessage>(new (std::nothrow) Message);
}

std::unique_ptr<LingoMessage> makeMessageOf(uint8_t lingo) {
  switch (lingo) {
    case kGeneralLingo:
      return make<GeneralMessage>();
    case kSimpleRemoteLingo:
      return make<SimpleRemoteMessage>();
    case kExtendedInterfaceLingo:
      return make<ExtendedInterfaceMessage>();
    case kDigitalAudioLingo:
      return make<DigitalAudioMessage>();
    default:
      return nullptr;
  }
}

std::unique_ptr<LingoMessage> makeMessage(uint8_t lingo, uint16_t command, const uint8_t* data,
                                          uint16_t length) {
  std::unique_ptr<LingoMessage> message = makeMessageOf(lingo);
  if (!message) return message;
  message->setCommand(command);
  if (!message->setData(data, length)) message.reset();
  return message;
}

}  // namespace

std::unique_ptr<LingoMessage> makeReceivedMessage(const uint8_t* payload, uint16_t length) {
  if (length < 1) return nullptr;
  const bool wideCommand = payload[0] == kExtendedInterfaceLingo;
  const uint16_t headerSize = wideCommand ? 3 : 2;
  if (length < headerSize) return nullptr;
  const auto command =
      wideCommand ? static_cast<uint16_t>(payload[1] << 8 | payload[2]) : uint16_t{payload[1]};
  return makeMessage(payload[0], command, payload + headerSize,
                     static_cast<uint16_t>(length - headerSize));
}

std::unique_ptr<LingoMessage> copyMessage(const LingoMessage& message) {
  return makeMessage(message.getLingo(), message.getCommand(), message.dataBytes(),
                     message.getDataLength());
}

}  // namespace ipodctl
