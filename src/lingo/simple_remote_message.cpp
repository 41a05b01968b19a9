#include "lingo/simple_remote_message.h"

#include "base/debug_print.h"

namespace ipodctl {

SimpleRemoteMessage::SimpleRemoteMessage() : LingoMessage(kLingo) {}

SimpleRemoteMessage::~SimpleRemoteMessage() = default;

uint16_t SimpleRemoteMessage::encode(uint8_t* buffer, uint32_t capacity) const {
  return encodeBody(buffer, capacity, sizeof(uint8_t));
}

bool SimpleRemoteMessage::buildContextButtonStatus(int byteIndex, uint8_t buttonBitmasks) {
  constexpr uint8_t kNothingPressed = 0;
  setCommand(kContextButtonStatus);
  debugPrint("\nbyteIndex = %d", byteIndex);
  debugPrint("\nbuttonBitmasks = 0x%x", buttonBitmasks);
  if (byteIndex < 0 || byteIndex > 3) return true;
  uint8_t state[4] = {kNothingPressed, kNothingPressed, kNothingPressed, kNothingPressed};
  state[byteIndex] = buttonBitmasks;
  return appendData(state, static_cast<uint16_t>(byteIndex + 1));
}

bool SimpleRemoteMessage::buildAudioButtonStatus(uint32_t buttons) {
  return build(kAudioButtonStatus, buttons);
}

}  // namespace ipodctl
