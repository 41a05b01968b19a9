// The sample rate of the digital audio: the iPod announces it whenever it changes, and goes on only
// when it was acknowledged.

#include <utility>

#include "controller/ipod_controller.h"

namespace ipodctl {
namespace {

constexpr int kAttributeWaits = 3;

bool isAudioAttributes(const LingoMessage& message) {
  return message.getLingo() == kDigitalAudioLingo &&
         message.getCommand() == DigitalAudioMessage::kTrackNewAudioAttributes;
}

}  // namespace

void IpodController::notificationTrampoline(void* owner, std::unique_ptr<LingoMessage> message) {
  static_cast<IpodController*>(owner)->onIncomingMessage(std::move(message));
}

int IpodController::onIncomingMessage(std::unique_ptr<LingoMessage> message) {
  if (!message || !isAudioAttributes(*message)) return 0;
  acceptAudioAttributes(static_cast<const DigitalAudioMessage&>(*message));
  const ResampleCallback callback = resampleCallback;
  if (callback != nullptr) callback(static_cast<int32_t>(sampleRate.load()));
  return 0;
}

bool IpodController::waitAudioAttributes(uint32_t& rate) {
  if (!clearReplies()) return false;
  for (int i = 0; i < kAttributeWaits; ++i) {
    std::unique_ptr<LingoMessage> message = nextMessage();
    if (!message) continue;
    const bool expected = isAudioAttributes(*message);
    if (expected) acceptAudioAttributes(static_cast<const DigitalAudioMessage&>(*message));
    (void)keptMessages.append(std::move(message));
    if (expected) {
      rate = sampleRate;
      return true;
    }
  }
  return false;
}

/// Stores the announced rate, if the message is whole, and acknowledges in any case.
void IpodController::acceptAudioAttributes(const DigitalAudioMessage& message) {
  uint32_t rate = 0;
  uint32_t soundCheck = 0;
  uint32_t volumeAdjustment = 0;
  if (message.decodeTrackNewAudioAttributes(rate, soundCheck, volumeAdjustment)) sampleRate = rate;
  constexpr auto kCommand = static_cast<uint8_t>(DigitalAudioMessage::kTrackNewAudioAttributes);
  send(&DigitalAudioMessage::buildAccAck, kStatusOk, kCommand);
}

}  // namespace ipodctl
