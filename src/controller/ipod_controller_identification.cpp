// The identification of a digital-audio accessory: it announces its lingoes, answers the iPod's
// questions about itself and its sample rates, and requests three lingo versions.

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
  sendWithoutClearing(&GeneralMessage::buildIdentifyDeviceLingoes, kLingoMask);
}

void IpodController::answer(const LingoMessage& message) {
  if (const auto* general = messageAs<GeneralMessage>(message)) {
    answerInBothIdentifications(*general);
    if (endsVersionChain(*general)) identified = 1;
  } else if (const auto* audio = messageAs<DigitalAudioMessage>(message)) {
    answerDigitalAudio(*audio);
  }
}

/// Requests the version of the next lingo when the version of one is received: General, Extended
/// Interface, Digital Audio. Returns true for the last one.
bool IpodController::endsVersionChain(const GeneralMessage& message) {
  uint8_t lingo = 0;
  uint8_t major = 0;
  uint8_t minor = 0;
  if (!message.decodeReturnLingoProtocolVersion(lingo, major, minor)) return false;
  if (lingo == kGeneralLingo) {
    sendWithoutClearing(&GeneralMessage::buildRequestLingoProtocolVersion, kExtendedInterfaceLingo);
  } else if (lingo == kExtendedInterfaceLingo) {
    sendWithoutClearing(&GeneralMessage::buildRequestLingoProtocolVersion, kDigitalAudioLingo);
  }
  return lingo == kDigitalAudioLingo;
}

void IpodController::answerDigitalAudio(const DigitalAudioMessage& message) {
  switch (message.getCommand()) {
    case DigitalAudioMessage::kGetAccSampleRateCaps:
      sendWithoutClearing(&DigitalAudioMessage::buildRetAccSampleRateCaps, kSampleRates,
                          kSampleRateCount);
      sendWithoutClearing(&GeneralMessage::buildRequestLingoProtocolVersion, kGeneralLingo);
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

/// Returns true for the acknowledgement that ends the sequence.
bool IpodController::answersReentry(const LingoMessage& message) {
  if (const auto* audio = messageAs<DigitalAudioMessage>(message)) answerDigitalAudio(*audio);
  const auto* general = messageAs<GeneralMessage>(message);
  if (general == nullptr) return false;
  if (endsVersionChain(*general)) sendWithoutClearing(&GeneralMessage::buildEnterRemoteUiMode);
  return general->acknowledges(GeneralMessage::kEnterRemoteUiMode);
}

}  // namespace ipodctl
