// The sample rate of the digital audio. The iPod announces each new rate and waits for the
// acknowledgement.

#include <utility>

#include "controller/ipod_controller.h"

namespace ipodctl {
namespace {

constexpr int kAttributeWaits = 3;

/// The message as a TrackNewAudioAttributes, null when it is another one.
const DigitalAudioMessage* audioAttributes(const LingoMessage& message) {
  const auto* audio = messageAs<DigitalAudioMessage>(message);
  return audio != nullptr && audio->getCommand() == DigitalAudioMessage::kTrackNewAudioAttributes
             ? audio
             : nullptr;
}

}  // namespace

void IpodController::notificationTrampoline(void* owner, std::unique_ptr<LingoMessage> message) {
  static_cast<IpodController*>(owner)->onIncomingMessage(std::move(message));
}

int IpodController::onIncomingMessage(std::unique_ptr<LingoMessage> message) {
  const DigitalAudioMessage* attributes = message ? audioAttributes(*message) : nullptr;
  if (attributes == nullptr) return 0;
  acceptAudioAttributes(*attributes);
  const ResampleCallback callback = resampleCallback;
  if (callback != nullptr) callback(static_cast<int32_t>(sampleRate.get()));
  return 0;
}

bool IpodController::waitAudioAttributes(uint32_t& rate) {
  if (!clearReplies()) return false;
  for (int i = 0; i < kAttributeWaits; ++i) {
    std::unique_ptr<LingoMessage> message = nextMessage();
    if (!message) continue;
    const DigitalAudioMessage* attributes = audioAttributes(*message);
    const bool expected = attributes != nullptr;
    if (expected) acceptAudioAttributes(*attributes);
    (void)keptMessages.append(std::move(message));
    if (expected) {
      rate = sampleRate;
      return true;
    }
  }
  return false;
}

/// Stores the announced rate if the message decodes, and acknowledges it in any case.
void IpodController::acceptAudioAttributes(const DigitalAudioMessage& message) {
  uint32_t rate = 0;
  uint32_t soundCheck = 0;
  uint32_t volumeAdjustment = 0;
  if (message.decodeTrackNewAudioAttributes(rate, soundCheck, volumeAdjustment)) sampleRate = rate;
  constexpr auto kCommand = static_cast<uint8_t>(DigitalAudioMessage::kTrackNewAudioAttributes);
  sendWithoutClearing(&DigitalAudioMessage::buildAccAck, kStatusOk, kCommand);
}

}  // namespace ipodctl
