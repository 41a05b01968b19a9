// The identification of a digital-audio accessory: it announces its lingoes, answers the iPod's
// questions about itself and its sample rates, and walks the iPod through three lingo versions.

#include "base/debug_print.h"
#include "base/os_primitives.h"
#include "controller/ipod_controller.h"

namespace ipodctl {
namespace {

constexpr uint32_t kLingoMask =
    1u << kGeneralLingo | 1u << kExtendedInterfaceLingo | 1u << kDigitalAudioLingo;
constexpr int32_t kFirstPauseMicroseconds = 80000;
constexpr int32_t kSecondPauseMicroseconds = 20000;
constexpr int kReentryWaits = 10;

constexpr uint8_t kSampleRates[] = {DigitalAudioMessage::kRate8000, DigitalAudioMessage::kRate32000,
                                    DigitalAudioMessage::kRate44100,
                                    DigitalAudioMessage::kRate48000};
constexpr uint32_t kSampleRateCount = sizeof(kSampleRates);

}  // namespace

bool IpodController::indentifyIpod() {
  if (!clearReplies()) {
    debugPrint("indentifyIpod C = false \n");
    return false;
  }
  return identifyInAttempts([this] { announceLingoes(); },
                            [this](const LingoMessage& message) { answer(message); });
}

void IpodController::announceLingoes() {
  taskSleepMicro(kFirstPauseMicroseconds);
  taskSleepMicro(kSecondPauseMicroseconds);
  clearReplies();
  send(&GeneralMessage::buildIdentifyDeviceLingoes, kLingoMask);
}

void IpodController::answer(const LingoMessage& message) {
  if (message.getLingo() == kGeneralLingo) {
    answerGeneral(static_cast<const GeneralMessage&>(message));
  } else if (message.getLingo() == kDigitalAudioLingo) {
    answerDigitalAudio(static_cast<const DigitalAudioMessage&>(message));
  }
}

void IpodController::answerGeneral(const GeneralMessage& message) {
  switch (message.getCommand()) {
    case GeneralMessage::kIpodAck:
      if (acknowledges(message, GeneralMessage::kEnterRemoteUiMode)) identified = 1;
      break;
    case GeneralMessage::kReturnRemoteUiMode:
      answerRemoteUiMode(message);
      break;
    case GeneralMessage::kReturnLingoProtocolVersion:
      if (endsVersionChain(message)) identified = 1;
      break;
    case GeneralMessage::kGetAccessoryInfo:
      answerAccessoryInfo(message);
      break;
    default:
      break;
  }
}

/// The iPod tells the versions of its General, Extended Interface and Digital Audio lingoes one
/// after the other, each because it was asked when the one before had come. True for the last one.
bool IpodController::endsVersionChain(const GeneralMessage& message) {
  uint8_t lingo = 0;
  uint8_t major = 0;
  uint8_t minor = 0;
  if (!message.decodeReturnLingoProtocolVersion(lingo, major, minor)) return false;
  if (lingo == kGeneralLingo) {
    send(&GeneralMessage::buildRequestLingoProtocolVersion, kExtendedInterfaceLingo);
  } else if (lingo == kExtendedInterfaceLingo) {
    send(&GeneralMessage::buildRequestLingoProtocolVersion, kDigitalAudioLingo);
  }
  return lingo == kDigitalAudioLingo;
}

void IpodController::answerDigitalAudio(const DigitalAudioMessage& message) {
  switch (message.getCommand()) {
    case DigitalAudioMessage::kGetAccSampleRateCaps:
      send(&DigitalAudioMessage::buildRetAccSampleRateCaps, kSampleRates, kSampleRateCount);
      send(&GeneralMessage::buildRequestLingoProtocolVersion, kGeneralLingo);
      break;
    case DigitalAudioMessage::kTrackNewAudioAttributes:
      acceptAudioAttributes(message);
      break;
    default:
      break;
  }
}

bool IpodController::reenterExtendedMode() {
  if (!clearReplies()) return false;
  for (int i = 0; i < kReentryWaits; ++i) {
    const std::unique_ptr<LingoMessage> message = nextMessage();
    if (message && answersReentry(*message)) return true;
  }
  return false;
}

/// True for the acknowledgement that ends the sequence.
bool IpodController::answersReentry(const LingoMessage& message) {
  if (message.getLingo() == kDigitalAudioLingo) {
    answerDigitalAudio(static_cast<const DigitalAudioMessage&>(message));
  }
  if (message.getLingo() != kGeneralLingo) return false;
  const auto& general = static_cast<const GeneralMessage&>(message);
  if (endsVersionChain(general)) send(&GeneralMessage::buildEnterRemoteUiMode);
  return acknowledges(general, GeneralMessage::kEnterRemoteUiMode);
}

}  // namespace ipodctl
